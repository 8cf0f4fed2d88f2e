#pragma once

#include <string>

#include <QString>

namespace vistrane {

/// A text for the screen, on one line unless `keepsLines`. Bytes that are not UTF-8 become
/// replacement characters, control characters become blanks.
QString shownText(const std::string& bytes, bool keepsLines = false);

// Controls take "&" in a text for the mark of a mnemonic, and "&&" for an ampersand.

/// Marks nothing in `text`.
QString withoutMnemonic(QString text);
/// The text that is seen where `marked` is set.
QString withoutMarks(const QString& marked);
/// The letter that `marked` marks, in upper case; null without one.
QChar mnemonicOf(const QString& marked);
/// Marks the first `letter` of `text`, whatever its case, if there is one.
QString withMnemonic(const QString& text, QChar letter);

} // namespace vistrane
