// Whether this process can use the store at all, asked before a command runs: the library
// turns a store it can't open or write into defaults and empty lists, which must never pass
// for the store's content.
#ifndef ZETSETTINGS_TOOLS_STOREACCESS_H
#define ZETSETTINGS_TOOLS_STOREACCESS_H

#include <string>

namespace zettool {

// Which store the registry calls reach, and why: "the store /x (ZET_REGISTRY_DIR)".
std::string storeName();

// A setting that names no usable store (ZET_REGISTRY_DIR empty, or naming something that is
// not a directory); empty when the setting is fine.
std::string storeSettingProblem();

// Throws CommandError, naming the store and the reason, unless this process may read it, or
// read and write it. Making the base key of a new store is the only change either makes.
void requireReadableStore();
void requireWritableStore();

}  // namespace zettool

#endif
