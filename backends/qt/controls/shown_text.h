#pragma once

#include <string_view>

#include <QString>

namespace vistrane {

/// A text for the screen: valid Unicode, whatever the bytes are, on one line unless `keepsLines`.
/// Bytes that are no UTF-8 show as replacement characters, control characters as blanks.
QString shownText(std::string_view bytes, bool keepsLines = false);

/// A text in which no character is taken for the mark of a mnemonic, and back: the text that is
/// seen where `marked` is set.
QString withoutMnemonic(QString text);
QString withoutMarks(const QString& marked);

/// The letter that a text marks as its mnemonic; null without one.
QChar mnemonicOf(const QString& marked);

/// `text`, a shown one, with the first `letter` in it marked as the mnemonic; without a mark when
/// it does not occur.
QString withMnemonic(const QString& text, QChar letter);

} // namespace vistrane
