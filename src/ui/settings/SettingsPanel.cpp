#include "ui/settings/SettingsPanel.h"

#include <algorithm>

#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "statusbar/PlainText.h"
#include "ui/NoteLine.h"
#include "ui/SectionTitle.h"
#include "ui/Theme.h"
#include "ui/ThinScrollBar.h"
#include "ui/settings/SettingsCard.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

namespace {

constexpr int margin = 22;
constexpr int mostWidth = 680;  // of the rows

bool holds(const QString& text, const QString& word) {
    return text.contains(word, Qt::CaseInsensitive);
}

bool holdsAll(const QString& text, const QStringList& words) {
    return std::all_of(words.begin(), words.end(),
                       [&](const QString& word) { return holds(text, word); });
}

bool holdsAny(const QString& text, const QStringList& words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const QString& word) { return holds(text, word); });
}

}  // namespace

SettingsPanel::SettingsPanel(const QString& title, QWidget* parent)
    : QScrollArea(parent), name(title), content(new QWidget) {
    setAccessibleName(title);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ThinScrollBar(this));
    setWidgetResizable(true);
    column = new QVBoxLayout;
    column->setSpacing(6);
    QLabel* heading = PlainText::label(title);
    heading->setFont(styled(font(), TextStyle::Value));
    column->addWidget(heading);
    auto* inner = new QWidget;
    inner->setLayout(column);
    inner->setMaximumWidth(mostWidth);
    column->setContentsMargins(0, 0, 0, 0);
    auto* frame = new QVBoxLayout(content);
    frame->setContentsMargins(margin, margin - 4, margin, margin);
    frame->addWidget(inner);
    frame->addStretch();
    setWidget(content);
    content->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
}

void SettingsPanel::addSection(const QString& title, const QString& note) {
    section = title;
    if (title.isEmpty()) {
        column->addSpacing(6);
    } else {
        sectionNames << title;
        auto* heading = new SectionTitle(title);
        heading->setNote(note);
        heading->setCapitals(false);
        column->addWidget(heading);
    }
    card = nullptr;
}

void SettingsPanel::addRow(SettingsRow* row) {
    rows.push_back({row, section});
    addWidget(row);
}

void SettingsPanel::addWidget(QWidget* widget) {
    if (card == nullptr) {
        card = new SettingsCard;
        column->addWidget(card);
    }
    card->add(widget);
}

NoteLine* SettingsPanel::addNote(const QString& text) {
    auto* note = new NoteLine;
    column->addWidget(note);
    note->setNote(text);
    return note;
}

void SettingsPanel::follow(NotificationCenter& center,
                           const std::vector<std::string>& notifications) {
    for (const std::string& notification : notifications) {
        subscriptions.push_back(center.subscribe(notification, [this] { refresh(); }));
    }
    refresh();
}

void SettingsPanel::refresh() {
    for (const Found& each : rows) {
        each.row->refresh();
    }
}

bool SettingsPanel::event(QEvent* event) {
    if (event->type() == QEvent::Show || (event->type() == QEvent::PaletteChange && isVisible())) {
        refresh();
    }
    return QScrollArea::event(event);
}

bool SettingsPanel::find(const QStringList& words) {
    SettingsRow* first = nullptr;
    for (const Found& each : rows) {
        const QString own = each.section + u' ' + each.row->searchText();
        const bool found = !words.isEmpty() && !each.row->isHidden() && holdsAny(own, words) &&
                           holdsAll(name + u' ' + own, words);
        each.row->setFound(found);
        first = found && first == nullptr ? each.row : first;
    }
    if (first != nullptr) {
        ensureWidgetVisible(first, 0, 40);
    }
    return first != nullptr || holdsAll(name + u' ' + sectionNames.join(u' '), words);
}

int SettingsPanel::fullHeight(int width) {
    content->layout()->activate();
    return content->layout()->hasHeightForWidth() ? content->layout()->heightForWidth(width)
                                                  : content->sizeHint().height();
}

}  // namespace vostel
