#include "doctext.h"

namespace velmora::ui {

QString decodeDocument(const std::string& bytes, TextForm& form) {
    form.crlf = bytes.find("\r\n") != std::string::npos || bytes.find('\n') == std::string::npos;
    QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const QByteArray back = text.toUtf8();
    form.utf8 = back.size() == static_cast<qsizetype>(bytes.size()) &&
                std::equal(back.begin(), back.end(), bytes.begin());
    if (!form.utf8)
        text = QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (form.crlf)
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return text;
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

} // namespace velmora::ui
