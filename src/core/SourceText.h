#pragma once

#include <string>

#include <QString>

namespace vostel {

// Stands for a figure that is not there.
inline const QString noValue = QStringLiteral("—");

// The value text of an item that has no figure: "CPU —", and why (SourceHealth::error()) when that
// is known: "CPU — (cannot read /proc/stat: Permission denied)".
inline QString noValueText(const QString& name, const std::string& error) {
    const QString text = name + u' ' + noValue;
    return error.empty() ? text
                         : QStringLiteral("%1 (%2)").arg(text, QString::fromStdString(error));
}

// Such an error as a sentence: "Cannot read /proc/stat: Permission denied."
inline QString errorSentence(const std::string& error) {
    QString text = QString::fromStdString(error);
    if (!text.isEmpty()) {
        text[0] = text[0].toUpper();
        text += u'.';
    }
    return text;
}

}  // namespace vostel
