#pragma once

#include "exportwindow.h"

class QIODevice;

namespace KEO {

/// Should a title be kept from being a formula?
enum class Formulas { Kept, Disarmed };

/// A field of a row: in quotes when it holds a comma, a quote or a blank at an end. Line breaks
/// become blanks. Where \a formulas are disarmed, an apostrophe stands before a text that a
/// spreadsheet would evaluate: one that begins with =, +, -, @ or a tabulator.
[[nodiscard]] QString csvField(QString text, Formulas formulas);

/// Writes the rows of \a window as a table that any reader of comma-separated values takes: one row
/// of titles, then a row for each sample with its number, its time (sample i at i * \a period), 1
/// at the trigger sample and 0 elsewhere, and a value for each of the window's rows, as the viewer
/// shows it; a radix that shows nothing gives way to hexadecimal. Titles differ from one another. A
/// row that ends before the longest one is empty from there on. The content is UTF-8. False when
/// the device refuses anything.
[[nodiscard]] bool writePlainCsv(QIODevice &out, const QString &timeUnit, int period,
                                 int triggerSample, Formulas formulas, ExportWindow window);

} // namespace KEO
