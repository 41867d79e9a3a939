#pragma once
// The writer side of XML -> binary: the string table, the template ring and the token bytes,
// written as the converter writes them (see the rules of the binary form). Names are looked up
// by the tag text as it stands in the XML: each distinct tag is turned into its binary form
// once, and an element costs one hash of its tag.

#include "serz/serz.h"
#include "tables.h"
#include "tokens.h"

#include <array>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>

namespace serz {

// A text the writer may put in the string table: its binary form and, once known, its index.
struct Interned {
    std::string_view text;
    std::uint32_t hash = 0;
    std::uint32_t index = TextTable::kAbsent;
    bool storable = true; // false: the text ends in the middle of a UTF-8 character
};

class Writer {
public:
    explicit Writer(std::string& out, std::size_t expected) : m_out(out) {
        m_out.clear();
        m_out.reserve(expected + 8);
        m_out.assign("SERZ\0\0\1\0", 8);
        m_ring.fill(TemplateSlots::kEmpty);
        for (std::size_t i = 0; i < m_types.size(); ++i)
            m_types[i].text = typeText(static_cast<ValueType>(i));
        for (auto& t : m_types)
            t.hash = hashText(t.text);
    }

    // The interned form of an element's tag as it stands in the XML ("-" for "::").
    Interned& name(std::string_view xmlName) {
        const std::uint32_t hash = hashText(xmlName);
        const std::uint32_t at = m_tags.find(xmlName, hash);
        if (at != TextTable::kAbsent)
            return m_names[at];
        Interned n;
        if (xmlName.find('-') == std::string_view::npos) {
            n.text = xmlName;
            n.hash = hash;
        } else {
            std::string& text = m_owned.emplace_back();
            text.reserve(xmlName.size() + 8);
            for (char c : xmlName) {
                if (c == '-')
                    text += "::";
                else
                    text += c;
            }
            n.text = text;
            n.hash = hashText(text);
        }
        n.storable = storable(n.text);
        m_tags.insert(xmlName, hash, static_cast<std::uint32_t>(m_names.size()));
        return m_names.emplace_back(n);
    }
    // The interned name of a value type (its text is the type's own name).
    Interned& type(ValueType vt) { return m_types[static_cast<std::size_t>(vt)]; }

    // Writes the token's head: a back-reference to its template, or the escape, the kind and
    // the strings of a new template. False when the string table is full.
    bool head(Kind kind, Interned* name, Interned* type) {
        const bool nameKnown = !name || known(*name);
        const bool typeKnown = !type || known(*type);
        if (nameKnown && typeKnown) {
            const int slot = m_templates.find(key(kind, name, type));
            if (slot != TemplateSlots::kAbsent) {
                m_out += static_cast<char>(slot);
                return true;
            }
        }
        m_out += '\xFF';
        m_out += static_cast<char>(kind);
        if (name && !strref(*name))
            return false;
        if (type && !strref(*type))
            return false;
        const std::uint64_t k = key(kind, name, type);
        if (m_ring[m_next] != TemplateSlots::kEmpty)
            m_templates.erase(m_ring[m_next]);
        m_ring[m_next] = k;
        m_templates.insert(k, static_cast<std::uint8_t>(m_next));
        m_next = (m_next + 1) % 255;
        return true;
    }

    // Text whose last character is cut short cannot be stored: a reader would run past it.
    static bool storable(std::string_view s) {
        std::size_t p = 0;
        while (p < s.size())
            p += utf8Length(static_cast<unsigned char>(s[p]));
        return p == s.size();
    }

    // A string value. `stable`: the text stays where it is for the whole conversion (it lies in
    // the input); otherwise it is copied when it is new. False when the table is full.
    bool text(std::string_view s, bool stable) {
        Interned t{s, hashText(s)};
        if (!known(t)) {
            if (!stable)
                t.text = m_owned.emplace_back(s);
        }
        return strref(t);
    }

    void put8(std::uint8_t v) { m_out += static_cast<char>(v); }
    void put16(std::uint16_t v) { m_out.append(reinterpret_cast<const char*>(&v), 2); }
    void put32(std::uint32_t v) { m_out.append(reinterpret_cast<const char*>(&v), 4); }
    void putRaw(const void* p, std::size_t n) { m_out.append(static_cast<const char*>(p), n); }
    std::size_t size() const { return m_out.size(); }
    void patch32(std::size_t at, std::uint32_t v) { std::memcpy(m_out.data() + at, &v, 4); }

private:
    static std::string_view typeText(ValueType vt) {
        switch (vt) {
        case ValueType::Bool: return "bool";
        case ValueType::SInt8: return "sInt8";
        case ValueType::UInt8: return "sUInt8";
        case ValueType::SInt16: return "sInt16";
        case ValueType::UInt16: return "sUInt16";
        case ValueType::SInt32: return "sInt32";
        case ValueType::UInt32: return "sUInt32";
        case ValueType::SInt64: return "sInt64";
        case ValueType::UInt64: return "sUInt64";
        case ValueType::Float32: return "sFloat32";
        case ValueType::Float64: return "sFloat64";
        case ValueType::String: return "cDeltaString";
        case ValueType::Unknown: break;
        }
        return {};
    }
    static std::uint64_t key(Kind k, const Interned* n, const Interned* t) {
        return (std::uint64_t(static_cast<std::uint8_t>(k)) << 32) | (std::uint64_t(n ? n->index : 0) << 16) |
               (t ? t->index : 0);
    }
    // Whether the text is in the string table; a text first seen as something else (a name
    // that was a string value before) is found there.
    bool known(Interned& s) {
        if (s.index == TextTable::kAbsent)
            s.index = m_strings.find(s.text, s.hash);
        return s.index != TextTable::kAbsent;
    }
    bool strref(Interned& s) {
        if (known(s)) {
            put16(static_cast<std::uint16_t>(s.index));
            return true;
        }
        if (m_strings.size() >= 0xFFFF)
            return false;
        s.index = static_cast<std::uint32_t>(m_strings.size());
        m_strings.insert(s.text, s.hash, s.index);
        put16(0xFFFF);
        // Counted the way a reader walks them, so that text that is not proper UTF-8 still
        // comes back as the same bytes.
        std::uint32_t chars = 0;
        for (std::size_t p = 0; p < s.text.size(); p += utf8Length(static_cast<unsigned char>(s.text[p])))
            ++chars;
        put32(chars);
        m_out += s.text;
        return true;
    }

    std::string& m_out;
    TextTable m_strings;        // binary text -> string index
    TextTable m_tags;           // tag as in the XML -> m_names
    std::deque<Interned> m_names;
    std::array<Interned, static_cast<std::size_t>(ValueType::Unknown)> m_types;
    std::deque<std::string> m_owned; // texts that do not lie in the input
    TemplateSlots m_templates;
    std::array<std::uint64_t, 255> m_ring{};
    std::size_t m_next = 0;
};

} // namespace serz
