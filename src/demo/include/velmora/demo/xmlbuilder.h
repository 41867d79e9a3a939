#pragma once
// Writes documents in the converter's XML dialect: one element a line, TAB indentation,
// typed values, so that the codec can turn them into the simulator's binary form.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::demo {

class XmlBuilder {
public:
    explicit XmlBuilder(std::string_view rootName, std::int64_t rootId = 0);

    XmlBuilder& open(std::string_view name, std::int64_t id = 0);
    XmlBuilder& close();
    XmlBuilder& empty(std::string_view name, std::int64_t id = 0); // <X/>
    XmlBuilder& str(std::string_view name, std::string_view value);
    XmlBuilder& boolean(std::string_view name, bool value);
    XmlBuilder& integer(std::string_view name, std::string_view type, long long value);
    XmlBuilder& uint64(std::string_view name, unsigned long long value);
    XmlBuilder& float32(std::string_view name, double value);
    XmlBuilder& float64(std::string_view name, double value);
    XmlBuilder& floats(std::string_view name, const std::vector<double>& values);
    XmlBuilder& ref(std::string_view name, std::int64_t target);
    XmlBuilder& nil();
    XmlBuilder& blob(const std::string& bytes);

    // The shared shapes: a blueprint reference, a localised name, a GUID.
    XmlBuilder& blueprintRef(std::string_view name, std::string_view provider, std::string_view product,
                             std::string_view blueprintId);
    XmlBuilder& localised(std::string_view name, std::string_view english);
    XmlBuilder& guid(std::string_view name, std::uint64_t a, std::uint64_t b, std::string_view devString);

    // Closes every open element and returns the document.
    std::string finish();

private:
    void indent();
    void line(const std::string& text);
    std::string m_out;
    std::vector<std::string> m_stack;
    bool m_justOpened = false; // the last line opened an element that has no child yet
};

// Escapes text the way the converter writes it.
std::string xmlEscape(std::string_view text);
// The converter's short float form: "%g" with six significant digits, exact decimal ties rounded
// away from zero, at least `exponentDigits` exponent digits.
std::string formatFloat(double value, int exponentDigits = 3);

} // namespace velmora::demo
