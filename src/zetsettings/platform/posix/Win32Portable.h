// The portable subset of Win32 that the library, its tests and its tool call, for platforms
// that are not Windows. Names, types, flags and error codes are Windows' own, so that code
// above the seam compiles unchanged on both sides.
//
// Text: WCHAR is the platform's wchar_t. Where that is 32 bits, the layer converts at the
// boundary: key names, value names and the data of REG_SZ, REG_EXPAND_SZ and REG_MULTI_SZ
// values are held as UTF-16 in the store, and every count that crosses this interface counts
// the caller's WCHAR units (cch arguments) or the caller's bytes (cb arguments, that is
// units * sizeof(WCHAR) for text values). Characters beyond U+FFFF become surrogate pairs in
// the store and come back as one character. Binary and numeric data are stored as given.
//
// The registry lives in an LMDB environment in the directory named by ZET_REGISTRY_DIR, or
// /var/lib/zetsettings, made on first use. The directory is read each time a predefined root
// is opened, so a process (a test, say) may move to another store between calls; every handle
// stays bound to the store it was opened in.
#ifndef ZETSETTINGS_PLATFORM_POSIX_WIN32PORTABLE_H
#define ZETSETTINGS_PLATFORM_POSIX_WIN32PORTABLE_H

#include <cstddef>
#include <cstdint>

// ---- basic types ---------------------------------------------------------------------------

typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint16_t WORD;
typedef uint8_t BYTE;
typedef int BOOL;
typedef wchar_t WCHAR;
typedef char CHAR;
typedef void VOID;
typedef void* PVOID;
typedef void* LPVOID;
typedef uintptr_t ULONG_PTR;
typedef LONG LSTATUS;
typedef DWORD REGSAM;
typedef DWORD* LPDWORD;
typedef DWORD* PDWORD;
typedef BYTE* LPBYTE;
typedef BYTE* PBYTE;
typedef const BYTE* LPCBYTE;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef void* HANDLE;
typedef void* HLOCAL;

struct HKEY__;
typedef HKEY__* HKEY;
typedef HKEY* PHKEY;

typedef struct _FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME, *PFILETIME, *LPFILETIME;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

// ---- error codes ---------------------------------------------------------------------------

#define ERROR_SUCCESS 0L
#define NO_ERROR 0L
#define ERROR_INVALID_FUNCTION 1L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_PATH_NOT_FOUND 3L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_NOT_ENOUGH_MEMORY 8L
#define ERROR_INVALID_DATA 13L
#define ERROR_OUTOFMEMORY 14L
#define ERROR_WRITE_PROTECT 19L
#define ERROR_NOT_SUPPORTED 50L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_DISK_FULL 112L
#define ERROR_INSUFFICIENT_BUFFER 122L
#define ERROR_BAD_PATHNAME 161L
#define ERROR_ALREADY_EXISTS 183L
#define ERROR_FILENAME_EXCED_RANGE 206L
#define ERROR_MORE_DATA 234L
#define ERROR_NO_MORE_ITEMS 259L
#define ERROR_NOACCESS 998L
#define ERROR_NOT_OWNER 288L
#define ERROR_BADDB 1009L
#define ERROR_BADKEY 1010L
#define ERROR_CANTOPEN 1011L
#define ERROR_CANTREAD 1012L
#define ERROR_CANTWRITE 1013L
#define ERROR_REGISTRY_CORRUPT 1015L
#define ERROR_REGISTRY_IO_FAILED 1016L
#define ERROR_KEY_DELETED 1018L
#define ERROR_KEY_HAS_CHILDREN 1020L
#define ERROR_UNKNOWN_REVISION 1305L
#define ERROR_TIMEOUT 1460L

// ---- registry ------------------------------------------------------------------------------

#define ZET_PREDEFINED_HKEY(value) ((HKEY)(intptr_t)(int32_t)(value))
#define HKEY_CLASSES_ROOT ZET_PREDEFINED_HKEY(0x80000000u)
#define HKEY_CURRENT_USER ZET_PREDEFINED_HKEY(0x80000001u)
#define HKEY_LOCAL_MACHINE ZET_PREDEFINED_HKEY(0x80000002u)
#define HKEY_USERS ZET_PREDEFINED_HKEY(0x80000003u)

#define DELETE 0x00010000L
#define READ_CONTROL 0x00020000L
#define WRITE_DAC 0x00040000L
#define WRITE_OWNER 0x00080000L
#define SYNCHRONIZE 0x00100000L
#define STANDARD_RIGHTS_READ READ_CONTROL
#define STANDARD_RIGHTS_WRITE READ_CONTROL
#define STANDARD_RIGHTS_REQUIRED 0x000F0000L

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_WOW64_64KEY 0x0100
#define KEY_WOW64_32KEY 0x0200
#define KEY_READ 0x20019
#define KEY_EXECUTE 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_DWORD_LITTLE_ENDIAN 4
#define REG_DWORD_BIG_ENDIAN 5
#define REG_LINK 6
#define REG_MULTI_SZ 7
#define REG_RESOURCE_LIST 8
#define REG_QWORD 11
#define REG_QWORD_LITTLE_ENDIAN 11

#define REG_OPTION_NON_VOLATILE 0x0
#define REG_OPTION_VOLATILE 0x1
#define REG_CREATED_NEW_KEY 0x1
#define REG_OPENED_EXISTING_KEY 0x2

// ---- security ------------------------------------------------------------------------------

typedef struct _ACL {
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;
    WORD AceCount;
    WORD Sbz2;
} ACL, *PACL;

typedef struct _SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    WORD Control;
    PVOID Owner;
    PVOID Group;
    PACL Sacl;
    PACL Dacl;
} SECURITY_DESCRIPTOR;
typedef void* PSECURITY_DESCRIPTOR;

typedef struct _SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
} SECURITY_ATTRIBUTES, *PSECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;

#define SECURITY_DESCRIPTOR_REVISION 1
#define SE_DACL_PRESENT 0x0004
#define SE_DACL_DEFAULTED 0x0008

// ---- synchronisation -----------------------------------------------------------------------

#define INFINITE 0xFFFFFFFFu
#define WAIT_OBJECT_0 0x00000000u
#define WAIT_ABANDONED 0x00000080u
#define WAIT_TIMEOUT 0x00000102u
#define WAIT_FAILED 0xFFFFFFFFu

// ---- data protection -----------------------------------------------------------------------

typedef struct _CRYPTOAPI_BLOB {
    DWORD cbData;
    BYTE* pbData;
} DATA_BLOB, *PDATA_BLOB;

#define CRYPTPROTECT_UI_FORBIDDEN 0x1
#define CRYPTPROTECT_LOCAL_MACHINE 0x4

// ---- version -------------------------------------------------------------------------------

// The service pack text is UTF-16 on every platform, so the record has Windows' size (284).
typedef struct _OSVERSIONINFOW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char16_t szCSDVersion[128];
} OSVERSIONINFOW, *POSVERSIONINFOW, *LPOSVERSIONINFOW;

typedef struct _OSVERSIONINFOEXW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char16_t szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
} OSVERSIONINFOEXW, *POSVERSIONINFOEXW, *LPOSVERSIONINFOEXW;

#define VER_PLATFORM_WIN32_NT 2
#define VER_NT_WORKSTATION 1

// ---- functions -----------------------------------------------------------------------------

#if defined(__GNUC__)
#define ZET_PORTABLE_API __attribute__((visibility("default")))
#else
#define ZET_PORTABLE_API
#endif

extern "C" {

ZET_PORTABLE_API DWORD GetLastError(void);
ZET_PORTABLE_API void SetLastError(DWORD error);

ZET_PORTABLE_API LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR lpClass,
                                         DWORD dwOptions, REGSAM samDesired,
                                         const SECURITY_ATTRIBUTES* lpSecurityAttributes,
                                         PHKEY phkResult, LPDWORD lpdwDisposition);
ZET_PORTABLE_API LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                                       PHKEY phkResult);
ZET_PORTABLE_API LSTATUS RegCloseKey(HKEY hKey);
ZET_PORTABLE_API LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved,
                                          LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData);
ZET_PORTABLE_API LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType,
                                        const BYTE* lpData, DWORD cbData);
ZET_PORTABLE_API LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName);
ZET_PORTABLE_API LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR lpName, LPDWORD lpcchName,
                                       LPDWORD lpReserved, LPWSTR lpClass, LPDWORD lpcchClass,
                                       PFILETIME lpftLastWriteTime);
ZET_PORTABLE_API LSTATUS RegEnumValueW(HKEY hKey, DWORD dwIndex, LPWSTR lpValueName,
                                       LPDWORD lpcchValueName, LPDWORD lpReserved, LPDWORD lpType,
                                       LPBYTE lpData, LPDWORD lpcbData);
ZET_PORTABLE_API LSTATUS RegQueryInfoKeyW(HKEY hKey, LPWSTR lpClass, LPDWORD lpcchClass,
                                          LPDWORD lpReserved, LPDWORD lpcSubKeys,
                                          LPDWORD lpcbMaxSubKeyLen, LPDWORD lpcbMaxClassLen,
                                          LPDWORD lpcValues, LPDWORD lpcbMaxValueNameLen,
                                          LPDWORD lpcbMaxValueLen, LPDWORD lpcbSecurityDescriptor,
                                          PFILETIME lpftLastWriteTime);
ZET_PORTABLE_API LSTATUS RegDeleteKeyW(HKEY hKey, LPCWSTR lpSubKey);
ZET_PORTABLE_API LSTATUS RegDeleteTreeW(HKEY hKey, LPCWSTR lpSubKey);

// Not Windows': the portable registry's write batch (platform/RegistryBatch.h says what it is
// for). Batches nest; ZetRegEndBatch ends the innermost one, and the outermost commits its
// writes (keep) or drops them. Windows has none, and Win32.h gives it the same two names.
ZET_PORTABLE_API void ZetRegBeginBatch(void);
ZET_PORTABLE_API LSTATUS ZetRegEndBatch(BOOL keep);

ZET_PORTABLE_API HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner,
                                     LPCWSTR lpName);
ZET_PORTABLE_API DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
ZET_PORTABLE_API BOOL ReleaseMutex(HANDLE hMutex);
ZET_PORTABLE_API BOOL CloseHandle(HANDLE hObject);

ZET_PORTABLE_API BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor,
                                                   DWORD dwRevision);
ZET_PORTABLE_API BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor,
                                                BOOL bDaclPresent, PACL pDacl, BOOL bDaclDefaulted);

ZET_PORTABLE_API BOOL CryptProtectData(DATA_BLOB* pDataIn, LPCWSTR szDataDescr,
                                       DATA_BLOB* pOptionalEntropy, PVOID pvReserved,
                                       PVOID pPromptStruct, DWORD dwFlags, DATA_BLOB* pDataOut);
ZET_PORTABLE_API BOOL CryptUnprotectData(DATA_BLOB* pDataIn, LPWSTR* ppszDataDescr,
                                         DATA_BLOB* pOptionalEntropy, PVOID pvReserved,
                                         PVOID pPromptStruct, DWORD dwFlags, DATA_BLOB* pDataOut);
ZET_PORTABLE_API HLOCAL LocalFree(HLOCAL hMem);

ZET_PORTABLE_API BOOL GetVersionExW(LPOSVERSIONINFOW lpVersionInformation);

}  // extern "C"

#endif
