#pragma once

#include <string>

#include <QString>

namespace vistrane {

/// Converts a text for the screen, to one line unless `keepsLines`. Bytes that are not UTF-8 become
/// replacement characters, control characters become blanks.
QString shownText(const std::string& bytes, bool keepsLines = false);

// In a control's text "&" marks a mnemonic, and "&&" is an ampersand.

/// Escapes `text`, so that it has no mnemonic.
QString withoutMnemonic(QString text);
/// The text that a control shows for `marked`.
QString withoutMarks(const QString& marked);
/// The mnemonic of `marked`, in upper case; null if there is none.
QChar mnemonicOf(const QString& marked);
/// Marks the first occurrence of `letter` in `text`, in either case, if there is one.
QString withMnemonic(const QString& text, QChar letter);

} // namespace vistrane
