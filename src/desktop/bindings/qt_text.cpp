#include "desktop/bindings/qt_text.h"

#include <QStringDecoder>
#include <QTextDocument>

namespace pelvan::desktop {

QString to_qt(const std::string& text) {
    const QByteArrayView bytes(text.data(), static_cast<qsizetype>(text.size()));
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString out = decoder.decode(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : out;
}

std::string from_qt(const QString& text) {
    return text.toStdString();
}

bool survives_qt(const std::string& text) {
    return from_qt(to_qt(text)) == text;
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
