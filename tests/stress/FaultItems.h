// The items of the fault and environment tests: one of each kind of write that the library
// makes, in two generations whose every form can be told apart and checked whole.
#ifndef ZETSETTINGS_TESTS_STRESS_FAULTITEMS_H
#define ZETSETTINGS_TESTS_STRESS_FAULTITEMS_H

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "Processes.h"

namespace zetstress {

// What a read of an item found besides a generation (0 or 1).
const int kAbsent = -1;
const int kTorn = -2;
const int kWithoutSecret = -3;  // a profile of the new generation whose protected member is empty

enum class Reported { Success, Failure, Silent };

struct Item {
    const char* name;
    std::function<Reported(int generation)> write;
    std::function<int()> read;  // the generation found, or kAbsent, kTorn, kWithoutSecret
};

const std::vector<Item>& items();
std::string nameOfState(int state);

// Sets the fallback keys to one entry of `bytes` bytes: the Windows error with which the registry
// refused, else ERROR_SUCCESS. Only a refusal of the registry is thrown: a set that could not be
// encrypted is dropped in silence.
unsigned long setFallbackKey(const std::wstring& name, const std::wstring& text, std::size_t bytes);

// The library never creates the system's EAP key: a store must have it before its item is
// written.
bool createEapKey();

// Writes made after a fault: a value set directly and a profile, both read back.
bool furtherWriteSucceeds();

// Counts as violations every file or folder below `folder` that others may write,
// a machine key not owner-only, a key candidate left behind, and every secret of the items found
// in the clear in a file.
void reportExposure(const std::filesystem::path& folder, Violations& fault);

std::string fileBytes(const std::filesystem::path& path);

}  // namespace zetstress

#endif
