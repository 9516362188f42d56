#include <gtest/gtest.h>
#include <sodium.h>

#include <fstream>
#include <iterator>

#include "support/TestRegistry.h"
#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/platform/posix/tests/DataProtectionTestSupport.h"

namespace {

using zettest::protect;
using zettest::unprotect;

const std::size_t kNonce = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;
const std::size_t kTag = crypto_aead_xchacha20poly1305_ietf_ABYTES;

std::string keyBytes()
{
    std::ifstream in(zettest::keyPath(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Opens a blob by the documented layout alone, with libsodium directly.
bool openByHand(const std::string& blob, const std::string& additional, std::string& payload)
{
    const std::string key = keyBytes();
    if (key.size() != crypto_aead_xchacha20poly1305_ietf_KEYBYTES || blob.size() < 1 + kNonce + kTag)
        return false;
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(blob.data());
    payload.assign(blob.size() - 1 - kNonce - kTag, '\0');
    unsigned long long length = 0;
    return crypto_aead_xchacha20poly1305_ietf_decrypt(
               reinterpret_cast<unsigned char*>(&payload[0]), &length, nullptr, bytes + 1 + kNonce,
               blob.size() - 1 - kNonce, reinterpret_cast<const unsigned char*>(additional.data()),
               additional.size(), bytes + 1, reinterpret_cast<const unsigned char*>(key.data())) == 0;
}

class ProtectedBlobTest : public zettest::RegistryTest {};

TEST_F(ProtectedBlobTest, ABlobIsVersionNonceAndTheSealedDescriptionAndData)
{
    const std::string entropy = "ent";
    const zettest::Protection blob = protect(std::string("d\0ta", 4), &entropy, L"Wi");
    ASSERT_TRUE(blob.ok);
    ASSERT_EQ(1 + kNonce + 4 + 2 * 2 + 4 + kTag, blob.bytes.size());
    EXPECT_EQ('\x01', blob.bytes[0]);

    std::string payload;
    ASSERT_TRUE(openByHand(blob.bytes, std::string("\x01", 1) + entropy, payload));
    EXPECT_EQ(std::string("\x02\0\0\0W\0i\0d\0ta", 12), payload);
    EXPECT_FALSE(openByHand(blob.bytes, std::string("\x01", 1), payload)) << "the entropy is bound";
}

TEST_F(ProtectedBlobTest, EveryBlobHasAFreshNonce)
{
    const std::string first = protect("same").bytes;
    const std::string second = protect("same").bytes;
    ASSERT_EQ(first.size(), second.size());
    EXPECT_NE(first.substr(1, kNonce), second.substr(1, kNonce));
}

TEST_F(ProtectedBlobTest, AnyChangedByteAndAnyCutOrLengthenedBlobIsRefused)
{
    const std::string blob = protect("secret", nullptr, L"description").bytes;
    ASSERT_TRUE(unprotect(blob).ok);
    for (std::size_t at = 0; at < blob.size(); ++at) {
        for (unsigned char bit : {0x01, 0x80}) {
            std::string changed = blob;
            changed[at] = static_cast<char>(changed[at] ^ bit);
            const zettest::Protection opened = unprotect(changed);
            EXPECT_FALSE(opened.ok) << "byte " << at;
            EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), opened.error) << "byte " << at;
            EXPECT_TRUE(opened.bytes.empty());
        }
    }
    for (std::size_t length = 0; length < blob.size(); ++length)
        EXPECT_FALSE(unprotect(blob.substr(0, length)).ok) << "cut to " << length;
    EXPECT_FALSE(unprotect(blob + '\0').ok);
}

TEST_F(ProtectedBlobTest, ABlobOfAnotherStoreIsRefused)
{
    protect("makes this store's key");
    std::string foreign;
    {
        zettest::TestRegistry other;
        foreign = protect("elsewhere").bytes;
        ASSERT_TRUE(unprotect(foreign).ok);
    }
    const zettest::Protection opened = unprotect(foreign);
    EXPECT_FALSE(opened.ok);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), opened.error);

    const ZETBuf foreignBuffer(foreign.data(), foreign.size());
    EXPECT_TRUE(ZETProtectData().decryptData(foreignBuffer, ZETBuf("")).isEmpty());
}

TEST_F(ProtectedBlobTest, EntropyMustMatchAndNoneEqualsEmpty)
{
    const std::string empty;
    const std::string salt = "salt";
    const std::string withNone = protect("a").bytes;
    EXPECT_TRUE(unprotect(withNone, &empty).ok);
    const std::string withSalt = protect("b", &salt).bytes;
    EXPECT_EQ("b", unprotect(withSalt, &salt).bytes);
    EXPECT_FALSE(unprotect(withSalt).ok);
    const std::string pepper = "pepper";
    const zettest::Protection wrong = unprotect(withSalt, &pepper);
    EXPECT_FALSE(wrong.ok);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), wrong.error);
}

TEST_F(ProtectedBlobTest, EmptyDataComesBackEmptyWithABufferToFree)
{
    const zettest::Protection blob = protect("");
    ASSERT_TRUE(blob.ok);
    DATA_BLOB in = zettest::blobOf(blob.bytes);
    DATA_BLOB out = {7, nullptr};
    ASSERT_TRUE(CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, zettest::kMachineScope, &out));
    EXPECT_EQ(0u, out.cbData);
    EXPECT_NE(nullptr, out.pbData);
    EXPECT_EQ(nullptr, LocalFree(out.pbData));
}

TEST_F(ProtectedBlobTest, TheDescriptionComesBackWithTheData)
{
    const wchar_t* description = L"R\u00e9seau \U0001D11E";
    const std::string blob = protect("x", nullptr, description).bytes;
    DATA_BLOB in = zettest::blobOf(blob);
    DATA_BLOB out = {0, nullptr};
    LPWSTR text = nullptr;
    ASSERT_TRUE(CryptUnprotectData(&in, &text, nullptr, nullptr, nullptr, zettest::kMachineScope, &out));
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(std::wstring(description), std::wstring(text));
    LocalFree(text);
    LocalFree(out.pbData);

    const std::string plain = protect("y").bytes;
    in = zettest::blobOf(plain);
    ASSERT_TRUE(CryptUnprotectData(&in, &text, nullptr, nullptr, nullptr, zettest::kMachineScope, &out));
    EXPECT_EQ(std::wstring(), std::wstring(text));
    LocalFree(text);
    LocalFree(out.pbData);
}

TEST_F(ProtectedBlobTest, UserScopeAndMissingArgumentsAreRefused)
{
    std::string data = "data";
    DATA_BLOB in = zettest::blobOf(data);
    DATA_BLOB out = {0, nullptr};
    EXPECT_FALSE(CryptProtectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_SUPPORTED), GetLastError());
    EXPECT_EQ(nullptr, out.pbData);

    EXPECT_FALSE(CryptProtectData(nullptr, nullptr, nullptr, nullptr, nullptr, zettest::kMachineScope, &out));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
    EXPECT_FALSE(CryptProtectData(&in, nullptr, nullptr, nullptr, nullptr, zettest::kMachineScope, nullptr));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
    DATA_BLOB dangling = {4, nullptr};
    EXPECT_FALSE(CryptUnprotectData(&dangling, nullptr, nullptr, nullptr, nullptr, zettest::kMachineScope, &out));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
}

}  // namespace
