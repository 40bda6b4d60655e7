#include "statusbar/PlainText.h"

#include <QChildEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QToolTip>

namespace vostel::PlainText {

namespace {

constexpr QChar wordJoiner = u'\u2060';  // no width, no place to break a line

void makePlain(const QObject& dialog) {
    const auto labels = dialog.findChildren<QLabel*>();
    for (QLabel* label : labels) {
        label->setTextFormat(Qt::PlainText);
    }
}

// A child is polished before it is laid out, and so before markup in it is read.
class MessageWatch : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::ChildPolished) {
            makePlain(*static_cast<QChildEvent*>(event)->child());
        }
        return false;
    }
};

}  // namespace

QString shown(const QString& text) {
    QString result = text;
    for (QChar& letter : result) {
        if (letter.category() == QChar::Other_Control && letter != u'\n') {
            letter = u' ';
        }
    }
    if (Qt::mightBeRichText(result)) {
        // A tag has its name, an entity its letters right behind the first character.
        result.replace(u'<', QString(u'<') + wordJoiner).replace(u'&', QString(u'&') + wordJoiner);
    }
    return result;
}

QString inMenu(const QString& text) {
    return shown(text).replace(u'\n', u' ').replace(u'&', QStringLiteral("&&"));
}

void setToolTip(QWidget& widget, const QString& text) {
    widget.setToolTip(shown(text));
}

void showToolTip(const QPoint& place, const QString& text) {
    QToolTip::showText(place, shown(text));
}

QLabel* label(const QString& text, QWidget* parent) {
    auto* made = new QLabel(parent);
    made->setTextFormat(Qt::PlainText);
    made->setText(text);
    return made;
}

QMessageBox* messageBox(const QString& text, const QString& detail, QWidget* parent) {
    auto* box = new QMessageBox(parent);
    box->setTextFormat(Qt::PlainText);
    box->setText(text);
    box->setInformativeText(detail);
    makePlain(*box);
    return box;
}

void keepMessagesPlain(QFileDialog& panel) {
    panel.installEventFilter(new MessageWatch(&panel));
}

}  // namespace vostel::PlainText
