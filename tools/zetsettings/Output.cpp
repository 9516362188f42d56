#include "Output.h"

#include <algorithm>
#include <cstdio>

#include "regfile/TextCodec.h"

namespace zettool {
namespace {

// Columns count characters, not bytes: continuation bytes of UTF-8 take no room.
std::size_t displayWidth(const std::string& utf8)
{
    std::size_t width = 0;
    for (unsigned char c : utf8)
        if ((c & 0xC0) != 0x80)
            ++width;
    return width;
}

std::string padded(const std::string& text, std::size_t width)
{
    const std::size_t shown = displayWidth(text);
    return shown >= width ? text : text + std::string(width - shown, ' ');
}

void writeJsonString(std::ostream& out, const std::string& utf8)
{
    out << '"';
    for (unsigned char c : utf8) {
        switch (c) {
        case '"': out << "\\\""; break;
        case '\\': out << "\\\\"; break;
        case '\n': out << "\\n"; break;
        case '\r': out << "\\r"; break;
        case '\t': out << "\\t"; break;
        default:
            if (c < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                out << escaped;
            } else {
                out << static_cast<char>(c);
            }
        }
    }
    out << '"';
}

std::string indentOf(int depth) { return std::string(static_cast<std::size_t>(depth) * 2, ' '); }

void printHuman(std::ostream& out, const Node& node, int depth);

void printTable(std::ostream& out, const std::vector<Node>& rows, int depth)
{
    std::vector<std::string> headers;
    for (const auto& field : rows.front().fields())
        headers.push_back(field.first);
    std::vector<std::size_t> widths;
    for (const std::string& header : headers)
        widths.push_back(displayWidth(header));
    std::vector<std::vector<std::string> > cells;
    for (const Node& row : rows) {
        std::vector<std::string> line;
        for (std::size_t i = 0; i < headers.size(); ++i) {
            const std::string cell = i < row.fields().size() ? row.fields()[i].second.humanText() : "";
            widths[i] = std::max(widths[i], displayWidth(cell));
            line.push_back(cell);
        }
        cells.push_back(line);
    }
    const auto printRow = [&](const std::vector<std::string>& line) {
        std::string text = indentOf(depth);
        for (std::size_t i = 0; i < line.size(); ++i)
            text += i + 1 == line.size() ? line[i] : padded(line[i], widths[i]) + "  ";
        while (!text.empty() && text.back() == ' ')
            text.pop_back();
        out << text << '\n';
    };
    printRow(headers);
    for (const auto& line : cells)
        printRow(line);
}

void printRecord(std::ostream& out, const Node& node, int depth)
{
    std::size_t width = 0;
    for (const auto& field : node.fields())
        if (field.second.isScalar())
            width = std::max(width, displayWidth(field.first));
    for (const auto& field : node.fields()) {
        if (field.second.isScalar()) {
            std::string line = indentOf(depth) + padded(field.first, width) + "  " + field.second.humanText();
            while (!line.empty() && line.back() == ' ')
                line.pop_back();
            out << line << '\n';
        } else {
            out << indentOf(depth) << field.first << ":\n";
            printHuman(out, field.second, depth + 1);
        }
    }
}

void printHuman(std::ostream& out, const Node& node, int depth)
{
    if (node.isScalar()) {
        out << indentOf(depth) << node.humanText() << '\n';
    } else if (node.kind() == Node::Kind::Record) {
        printRecord(out, node, depth);
    } else if (node.items().empty()) {
        out << indentOf(depth) << "(none)\n";
    } else if (node.items().front().kind() == Node::Kind::Record) {
        printTable(out, node.items(), depth);
    } else {
        for (const Node& item : node.items())
            printHuman(out, item, depth);
    }
}

}  // namespace

Node Node::null(const std::string& shown)
{
    Node node(Kind::Null);
    node.m_text = shown;
    return node;
}

Node Node::unsignedNumber(uint64_t value)
{
    Node node(Kind::Unsigned);
    node.m_unsigned = value;
    return node;
}

Node Node::boolean(bool value)
{
    Node node(Kind::Bool);
    node.m_bool = value;
    return node;
}

Node Node::number(long long value)
{
    Node node(Kind::Number);
    node.m_number = value;
    return node;
}

Node Node::text(const std::string& utf8)
{
    Node node(Kind::Text);
    node.m_text = utf8;
    return node;
}

Node Node::text(const std::wstring& wide)
{
    return text(zetreg::wideToUtf8(wide));
}

Node Node::bytes(const std::string& raw)
{
    Node node(Kind::Bytes);
    node.m_text = raw;
    return node;
}

Node& Node::add(const std::string& key, Node value)
{
    m_fields.emplace_back(key, std::move(value));
    return *this;
}

Node& Node::push(Node value)
{
    m_items.push_back(std::move(value));
    return *this;
}

std::string Node::humanText() const
{
    switch (m_kind) {
    case Kind::Null: return m_text;
    case Kind::Bool: return m_bool ? "yes" : "no";
    case Kind::Number: return std::to_string(m_number);
    case Kind::Unsigned: return std::to_string(m_unsigned);
    case Kind::Text: return m_text;
    case Kind::Bytes: return m_text.empty() ? "(empty)" : hexSpaced(m_text);
    default: return "...";
    }
}

void Node::writeJson(std::ostream& out) const
{
    switch (m_kind) {
    case Kind::Null: out << "null"; break;
    case Kind::Bool: out << (m_bool ? "true" : "false"); break;
    case Kind::Number: out << m_number; break;
    case Kind::Unsigned: out << m_unsigned; break;
    case Kind::Text: writeJsonString(out, m_text); break;
    case Kind::Bytes: writeJsonString(out, hexCompact(m_text)); break;
    case Kind::List:
        out << '[';
        for (std::size_t i = 0; i < m_items.size(); ++i) {
            if (i)
                out << ',';
            m_items[i].writeJson(out);
        }
        out << ']';
        break;
    case Kind::Record:
        out << '{';
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            if (i)
                out << ',';
            writeJsonString(out, m_fields[i].first);
            out << ':';
            m_fields[i].second.writeJson(out);
        }
        out << '}';
        break;
    }
}

void printNode(std::ostream& out, const Node& node, bool json)
{
    if (json) {
        node.writeJson(out);
        out << '\n';
    } else {
        printHuman(out, node, 0);
    }
}

std::string hexCompact(const std::string& raw)
{
    std::string out;
    char pair[3];
    for (unsigned char c : raw) {
        std::snprintf(pair, sizeof pair, "%02x", c);
        out += pair;
    }
    return out;
}

std::string hexSpaced(const std::string& raw)
{
    std::string out;
    char pair[4];
    for (unsigned char c : raw) {
        std::snprintf(pair, sizeof pair, out.empty() ? "%02X" : " %02X", c);
        out += pair;
    }
    return out;
}

}  // namespace zettool
