#include "doctext.h"

#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

namespace velmora::ui {

TextForm formOf(std::string_view bytes) {
    TextForm form;
    form.crlf = bytes.find("\r\n") != std::string_view::npos || bytes.find('\n') == std::string_view::npos;
    // UTF-8 when the bytes come back unchanged from it. Checked a piece at a time, each ending
    // after a line end: no character spans one, so the pieces agree with the whole.
    constexpr std::size_t kPiece = 1 << 20;
    for (std::size_t at = 0; at < bytes.size() && form.utf8;) {
        const std::size_t nl = bytes.find('\n', std::min(bytes.size(), at + kPiece));
        const std::size_t end = nl == std::string_view::npos ? bytes.size() : nl + 1;
        const std::string_view piece = bytes.substr(at, end - at);
        const QByteArray back = QString::fromUtf8(piece.data(), static_cast<qsizetype>(piece.size())).toUtf8();
        form.utf8 = back.size() == static_cast<qsizetype>(piece.size()) &&
                    std::equal(back.begin(), back.end(), piece.begin());
        at = end;
    }
    return form;
}

QString decodePart(std::string_view bytes, const TextForm& form) {
    const auto size = static_cast<qsizetype>(bytes.size());
    QString text = form.utf8 ? QString::fromUtf8(bytes.data(), size) : QString::fromLatin1(bytes.data(), size);
    if (form.crlf)
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return text;
}

QString decodeDocument(const std::string& bytes, TextForm& form) {
    form = formOf(bytes);
    return decodePart(bytes, form);
}

std::string encodeDocument(const QString& text, const TextForm& form) {
    QString t = text;
    // A view may hand back Unicode paragraph separators for its line breaks.
    t.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    if (form.crlf) {
        t.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        t.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    }
    const QByteArray b = form.utf8 ? t.toUtf8() : t.toLatin1();
    return std::string(b.constData(), static_cast<std::size_t>(b.size()));
}

std::string documentBytes(const QTextDocument* doc, const TextForm& form) {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(doc->characterCount()) * (form.crlf ? 21 : 20) / 20);
    for (QTextBlock block = doc->begin(); block.isValid(); block = block.next()) {
        if (block != doc->begin())
            bytes += form.crlf ? "\r\n" : "\n";
        bytes += encodeDocument(block.text(), form);
    }
    return bytes;
}

} // namespace velmora::ui
