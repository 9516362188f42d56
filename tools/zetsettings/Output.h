// What a command shows: a small tree of records, lists and scalars, printed either for a
// person (aligned fields, tables, bytes as hex) or, with --json, for a script.
#ifndef ZETSETTINGS_TOOLS_OUTPUT_H
#define ZETSETTINGS_TOOLS_OUTPUT_H

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace zettool {

class Node {
public:
    enum class Kind { Null, Bool, Number, Unsigned, Text, Bytes, List, Record };

    // JSON null; a person reads `shown` ("-" when not given), as for a secret not asked for.
    static Node null(const std::string& shown = "-");
    static Node boolean(bool value);
    static Node number(long long value);
    static Node unsignedNumber(uint64_t value);
    static Node text(const std::string& utf8);
    static Node text(const std::wstring& wide);
    static Node bytes(const std::string& raw);
    static Node list() { return Node(Kind::List); }
    static Node record() { return Node(Kind::Record); }

    // Records keep their fields in the order added.
    Node& add(const std::string& key, Node value);
    Node& push(Node value);

    Kind kind() const { return m_kind; }
    bool isScalar() const { return m_kind != Kind::List && m_kind != Kind::Record; }
    const std::vector<std::pair<std::string, Node> >& fields() const { return m_fields; }
    const std::vector<Node>& items() const { return m_items; }

    // The scalar as a person reads it: bytes as spaced hex pairs, booleans as yes/no.
    std::string humanText() const;
    void writeJson(std::ostream& out) const;

private:
    explicit Node(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    bool m_bool = false;
    long long m_number = 0;
    uint64_t m_unsigned = 0;
    std::string m_text;
    std::vector<std::pair<std::string, Node> > m_fields;
    std::vector<Node> m_items;
};

// Prints the tree to out in the chosen form, ending with a line end.
void printNode(std::ostream& out, const Node& node, bool json);

// Hex of raw bytes: "0a1b" (compact, lower case) or "0A 1B" (spaced, upper case).
std::string hexCompact(const std::string& raw);
std::string hexSpaced(const std::string& raw);

}  // namespace zettool

#endif
