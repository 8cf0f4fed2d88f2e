#include "backends/qt/controls/shown_text.h"

#include <QKeySequence>

namespace vistrane {

QString shownText(const std::string& bytes, bool keepsLines) {
    QString text = QString::fromStdString(bytes);
    for (QChar& character : text) {
        const bool isLineBreak = character == u'\n';
        if (character.category() == QChar::Other_Control && !(keepsLines && isLineBreak)) {
            character = u' ';
        }
    }
    return text;
}

QString withoutMnemonic(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

QString withoutMarks(const QString& marked) {
    QString text;
    for (qsizetype place = 0; place < marked.size(); ++place) {
        if (marked.at(place) == u'&' && ++place == marked.size()) {
            break;
        }
        text += marked.at(place);
    }
    return text;
}

QChar mnemonicOf(const QString& marked) {
    const QKeySequence keys = QKeySequence::mnemonic(marked);
    return keys.isEmpty() ? QChar() : QChar(keys[0].key());
}

QString withMnemonic(const QString& text, QChar letter) {
    const qsizetype place = letter.isNull() ? -1 : text.indexOf(letter, 0, Qt::CaseInsensitive);
    if (place < 0) {
        return withoutMnemonic(text);
    }
    return withoutMnemonic(text.left(place)) + u'&' + text.at(place) +
           withoutMnemonic(text.mid(place + 1));
}

} // namespace vistrane
