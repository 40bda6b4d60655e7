#pragma once

#include <string>
#include <vector>

#include <QScrollArea>

#include "core/NotificationCenter.h"

class QVBoxLayout;

namespace vostel {

class NoteLine;
class SettingsCard;
class SettingsRow;

// One page of the settings window: sections of rows under a title. What does not fit scrolls.
class SettingsPanel : public QScrollArea {
    Q_OBJECT

  public:
    explicit SettingsPanel(const QString& title, QWidget* parent = nullptr);

    const QString& title() const { return name; }

    // Begins a section; without a title its rows only stand apart from those above. `note` stands
    // at the right edge, over the last column.
    void addSection(const QString& title = {}, const QString& note = {});
    // Adds a row (or any other widget) to the section; the panel owns it.
    void addRow(SettingsRow* row);
    void addWidget(QWidget* widget);
    // A quiet text under the rows so far.
    NoteLine* addNote(const QString& text);

    // All rows show what the settings hold, now and whenever one of the notifications is posted.
    void follow(NotificationCenter& center, const std::vector<std::string>& notifications);
    virtual void refresh();

    // Marks the rows that the words of a search are found in, and scrolls to the first of them. No
    // words: no marks. True when the panel or one of its rows holds all of the words.
    bool find(const QStringList& words);

    // The height at which nothing has to scroll, for a given width.
    int fullHeight(int width);

  protected:
    // Shown again, and under another appearance of the desktop: not every row has a notification
    // for what it shows.
    bool event(QEvent* event) override;

  private:
    struct Found {
        SettingsRow* row;
        QString section;
    };

    QString name;
    QWidget* content;
    QVBoxLayout* column;
    SettingsCard* card = nullptr;
    QString section;
    std::vector<Found> rows;
    QStringList sectionNames;
    std::vector<NotificationCenter::Subscription> subscriptions;
};

}  // namespace vostel
