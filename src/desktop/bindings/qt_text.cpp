#include "desktop/bindings/qt_text.h"

#include <QStringDecoder>
#include <QTextDocument>

namespace pelvan::desktop {
namespace {

/// Whole UTF-8 or nothing; the empty text is UTF-8.
bool decode_utf8(const std::string& text, QString& out) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    out = decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    return !decoder.hasError();
}

bool is_utf8(const std::string& text) {
    QString ignored;
    return decode_utf8(text, ignored);
}

} // namespace

QString to_qt(const std::string& text) {
    QString out;
    if (decode_utf8(text, out)) return out;
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

std::string from_qt(const QString& text) {
    return text.toStdString();
}

int to_qt_position(const std::string& text, int bytes) {
    if (!is_utf8(text)) return bytes;
    return static_cast<int>(QString::fromUtf8(text.data(), bytes).size());
}

int from_qt_position(const std::string& text, int units) {
    if (!is_utf8(text)) return units;
    return static_cast<int>(to_qt(text).left(units).toUtf8().size());
}

QString without_marks(const QString& caption) {
    QString out;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        const bool mark = caption[i] == u'&' && i + 1 < caption.size();
        out += caption[mark ? ++i : i];
    }
    return out;
}

QString plain_tip(const std::string& text) {
    const QString tip = to_qt(text);
    return Qt::mightBeRichText(tip) ? tip.toHtmlEscaped() : tip;
}

QString visible_line(const std::string& text) {
    constexpr char16_t kControlPictures = 0x2400;
    QString line = to_qt(text);
    for (QChar& character : line)
        if (character < u' ' && character != u'\t')
            character = QChar(static_cast<char16_t>(kControlPictures + character.unicode()));
    return line;
}

} // namespace pelvan::desktop
