// Helpers the record commands share: text between the terminal and the library, and records
// as output nodes.
#ifndef ZETSETTINGS_TOOLS_RECORDFIELDS_H
#define ZETSETTINGS_TOOLS_RECORDFIELDS_H

#include <string>

#include "Cli.h"
#include "Output.h"
#include "regfile/TextCodec.h"

namespace zettool {

inline std::wstring wide(const std::string& utf8) { return zetreg::utf8ToWide(utf8); }

// A name that the library would take but can't be looked up or stored meaningfully.
inline std::wstring nonEmptyName(Args& args, const std::string& what)
{
    const std::string name = args.next(what);
    if (name.empty())
        throw UsageError(what + " can't be empty");
    return wide(name);
}

// A secret member: shown only when asked for, so that a listing never leaks it by accident.
inline Node secretField(const Node& value, bool reveal)
{
    return reveal ? value : Node::null("(hidden; --secret shows it)");
}

}  // namespace zettool

#endif
