#pragma once

#include <QString>

class QFileDialog;
class QLabel;
class QMessageBox;
class QPoint;
class QWidget;

// The toolkit decides by a text's look whether it is markup, and markup reads files. What is shown
// may be called by anybody (processes, interfaces, files): all tool tips, labels and messages are
// made here, and scripts/check-plain-text.sh looks for those that are not.
namespace vostel::PlainText {

// A text that the toolkit shows letter by letter: nothing is added unless it looks like markup,
// then only invisible characters. Control characters become blanks, line ends stay.
QString shown(const QString& text);

// The same for a menu's entry, which is one line: an "&" shows as itself, a tab parts no columns.
QString inMenu(const QString& text);

void setToolTip(QWidget& widget, const QString& text);

// At a place on the desktop, in logical pixels.
void showToolTip(const QPoint& place, const QString& text);

// Owned by `parent` or by whoever puts it into a layout.
QLabel* label(const QString& text = {}, QWidget* parent = nullptr);

// A message without icon and buttons; `detail` stands below in smaller letters and may be empty.
QMessageBox* messageBox(const QString& text, const QString& detail, QWidget* parent);

// The questions that the toolkit's own panel asks about files, too.
void keepMessagesPlain(QFileDialog& panel);

}  // namespace vostel::PlainText
