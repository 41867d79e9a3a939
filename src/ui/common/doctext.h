#pragma once
// The bytes of a document as text for a view and back, without losing a byte: UTF-8 when the
// bytes are valid UTF-8 (the converter's output), else one character per byte. Line ends are
// remembered, since the views hold every line break as one character.

#include <QString>

class QTextDocument;

#include <string>
#include <string_view>

namespace velmora::ui {

struct TextForm {
    bool utf8 = true;
    bool crlf = true;
};

QString decodeDocument(const std::string& bytes, TextForm& form);

// The form decodeDocument would choose, found without holding the whole text decoded.
TextForm formOf(std::string_view bytes);
// Bytes that end at a line end (or the end of the document), shown in the given form.
QString decodePart(std::string_view bytes, const TextForm& form);
std::string encodeDocument(const QString& text, const TextForm& form);
// The whole text of a view's document in the given form, line by line from the view's own
// text: a large document is not copied whole two or three times over, and a no-break space
// stays one (the view's plain text would make it a space).
std::string documentBytes(const QTextDocument* doc, const TextForm& form);

} // namespace velmora::ui
