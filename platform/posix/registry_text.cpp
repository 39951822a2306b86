#include "platform/posix/registry_text.h"

#include <cstdio>
#include <sstream>

namespace ze_posix {

namespace {

std::string Trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && (s[b] == ' ' || s[b] == '\t' || s[b] == '\r')) ++b;
    while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t' || s[e - 1] == '\r')) --e;
    return s.substr(b, e - b);
}

bool StartsWithNoCase(const std::string& s, size_t pos, const char* prefix) {
    for (size_t i = 0; prefix[i] != '\0'; ++i) {
        if (pos + i >= s.size()) return false;
        char c = s[pos + i];
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c != prefix[i]) return false;
    }
    return true;
}

// Reads a quoted string starting at s[pos] == '"'; leaves pos after the closing quote.
bool ReadQuoted(const std::string& s, size_t& pos, std::string& out) {
    if (pos >= s.size() || s[pos] != '"') return false;
    out.clear();
    for (++pos; pos < s.size(); ++pos) {
        char c = s[pos];
        if (c == '"') {
            ++pos;
            return true;
        }
        if (c == '\\') {
            if (++pos >= s.size()) return false;
            c = s[pos];
        }
        out.push_back(c);
    }
    return false;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool ParseHexBytes(const std::string& s, std::vector<BYTE>& out) {
    out.clear();
    size_t pos = 0;
    while (pos < s.size()) {
        while (pos < s.size() && (s[pos] == ' ' || s[pos] == '\t')) ++pos;
        if (pos >= s.size()) break;
        size_t end = s.find(',', pos);
        std::string item = Trim(s.substr(pos, end == std::string::npos ? std::string::npos : end - pos));
        if (item.empty() || item.size() > 2) return false;
        int value = 0;
        for (char c : item) {
            int d = HexDigit(c);
            if (d < 0) return false;
            value = value * 16 + d;
        }
        out.push_back(static_cast<BYTE>(value));
        if (end == std::string::npos) break;
        pos = end + 1;
        if (Trim(s.substr(pos)).empty()) return false;  // trailing comma
    }
    return true;
}

bool ParseHexNumber(const std::string& s, uint32_t& value) {
    if (s.empty() || s.size() > 8) return false;
    value = 0;
    for (char c : s) {
        int d = HexDigit(c);
        if (d < 0) return false;
        value = value * 16 + static_cast<uint32_t>(d);
    }
    return true;
}

// Parses the data after '='; false when it is not one of the forms this format writes.
bool ParseData(const std::string& text, DWORD& type, std::vector<BYTE>& data) {
    const std::string s = Trim(text);
    if (!s.empty() && s[0] == '"') {
        size_t pos = 0;
        std::string str;
        if (!ReadQuoted(s, pos, str) || !Trim(s.substr(pos)).empty()) return false;
        type = 1;  // REG_SZ
        data.assign(str.begin(), str.end());
        data.push_back(0);
        return true;
    }
    if (StartsWithNoCase(s, 0, "dword:")) {
        uint32_t v = 0;
        if (!ParseHexNumber(Trim(s.substr(6)), v)) return false;
        type = 4;  // REG_DWORD
        data = {static_cast<BYTE>(v), static_cast<BYTE>(v >> 8), static_cast<BYTE>(v >> 16),
                static_cast<BYTE>(v >> 24)};
        return true;
    }
    if (StartsWithNoCase(s, 0, "hex:")) {
        type = 3;  // REG_BINARY
        return ParseHexBytes(s.substr(4), data);
    }
    if (StartsWithNoCase(s, 0, "hex(")) {
        size_t close = s.find(')', 4);
        if (close == std::string::npos || close + 1 >= s.size() || s[close + 1] != ':') return false;
        uint32_t t = 0;
        if (!ParseHexNumber(s.substr(4, close - 4), t)) return false;
        type = t;
        return ParseHexBytes(s.substr(close + 2), data);
    }
    return false;
}

// Joins lines that end in a backslash (continued hex lists) with the next one.
std::vector<std::string> LogicalLines(const std::string& text) {
    std::vector<std::string> lines;
    std::string pending;
    std::istringstream in(text);
    std::string raw;
    while (std::getline(in, raw)) {
        std::string line = Trim(raw);
        if (!pending.empty()) line = pending + line;
        pending.clear();
        if (!line.empty() && line.back() == '\\' && line[0] != '[') {
            pending = line.substr(0, line.size() - 1);
            continue;
        }
        lines.push_back(line);
    }
    if (!pending.empty()) lines.push_back(pending);
    return lines;
}

bool IsStringData(const RegValue& v) {
    if (v.type != 1 || v.data.empty() || v.data.back() != 0) return false;
    for (size_t i = 0; i + 1 < v.data.size(); ++i) {
        const BYTE c = v.data[i];
        if (c < 0x20 || c == 0x7F) return false;
    }
    return true;
}

std::string Quote(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '\\' || c == '"') out.push_back('\\');
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

std::string HexList(const std::vector<BYTE>& data) {
    std::string out;
    char byte[4];
    for (size_t i = 0; i < data.size(); ++i) {
        std::snprintf(byte, sizeof byte, "%02x", data[i]);
        if (i) out.push_back(',');
        out += byte;
    }
    return out;
}

void FormatValue(const RegValue& v, std::string& out) {
    out += v.name.empty() ? std::string("@") : Quote(v.name);
    out.push_back('=');
    char head[32];
    if (IsStringData(v)) {
        out += Quote(std::string(v.data.begin(), v.data.end() - 1));
    } else if (v.type == 4 && v.data.size() == 4) {
        const uint32_t d = static_cast<uint32_t>(v.data[0]) | static_cast<uint32_t>(v.data[1]) << 8 |
                           static_cast<uint32_t>(v.data[2]) << 16 | static_cast<uint32_t>(v.data[3]) << 24;
        std::snprintf(head, sizeof head, "dword:%08x", d);
        out += head;
    } else if (v.type == 3) {
        out += "hex:" + HexList(v.data);
    } else {
        std::snprintf(head, sizeof head, "hex(%x):", v.type);
        out += head + HexList(v.data);
    }
    out.push_back('\n');
}

void FormatKey(const RegKey& key, const std::string& path, std::string& out) {
    out += "\n[" + path + "]\n";
    for (const RegValue& v : key.values) FormatValue(v, out);
    for (const auto& child : key.subkeys) FormatKey(*child.second, path + "\\" + child.second->name, out);
}

}  // namespace

size_t ParseRegText(const std::string& text, RegKey& root) {
    size_t skipped = 0;
    RegKey* current = nullptr;  // null: outside any section we can fill
    for (const std::string& line : LogicalLines(text)) {
        if (line.empty() || line[0] == ';' || line == "REGEDIT4" ||
            StartsWithNoCase(line, 0, "windows registry editor")) {
            continue;
        }
        if (line[0] == '[') {
            current = nullptr;
            if (line.back() != ']' || line.size() < 3 || line[1] == '-') {
                ++skipped;
                continue;
            }
            const std::string path = line.substr(1, line.size() - 2);
            size_t start = 0;
            std::vector<std::string> parts;
            while (true) {
                size_t slash = path.find('\\', start);
                parts.push_back(path.substr(start, slash == std::string::npos ? std::string::npos : slash - start));
                if (slash == std::string::npos) break;
                start = slash + 1;
            }
            RegPath hive;
            bool ok = HivePath(parts[0], hive);
            for (size_t i = 1; ok && i < parts.size(); ++i) ok = !parts[i].empty();
            if (!ok) {
                ++skipped;
                continue;
            }
            RegKey* node = &root;
            for (const std::string& part : hive) node = &node->EnsureChild(part);
            for (size_t i = 1; i < parts.size(); ++i) node = &node->EnsureChild(parts[i]);
            current = node;
            continue;
        }
        std::string name;
        size_t pos = 0;
        if (line[0] == '@') {
            pos = 1;
        } else if (!ReadQuoted(line, pos, name)) {
            ++skipped;
            continue;
        }
        while (pos < line.size() && (line[pos] == ' ' || line[pos] == '\t')) ++pos;
        DWORD type = 0;
        std::vector<BYTE> data;
        if (current == nullptr || pos >= line.size() || line[pos] != '=' ||
            !ParseData(line.substr(pos + 1), type, data)) {
            ++skipped;
            continue;
        }
        current->SetValue(name, type, std::move(data));
    }
    return skipped;
}

std::string FormatRegText(const RegKey& root) {
    std::string out = "REGEDIT4\n";
    for (const auto& hive : root.subkeys)
        for (const auto& child : hive.second->subkeys)
            FormatKey(*child.second, hive.second->name + "\\" + child.second->name, out);
    return out;
}

}  // namespace ze_posix
