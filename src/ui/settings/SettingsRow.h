#pragma once

#include <QStringList>
#include <QWidget>

class QHBoxLayout;
class QLabel;

namespace vostel {

// One line of a settings panel: a title at the left, what edits it at the right.
class SettingsRow : public QWidget {
    Q_OBJECT

  public:
    explicit SettingsRow(const QString& title, QWidget* parent = nullptr);

    const QString& title() const { return name; }
    // A second, quiet line under the title; empty hides it.
    void setHint(const QString& text);

    // Shows what the settings hold now; never writes.
    virtual void refresh() {}

    // Further words that a search finds this row by.
    void setKeywords(const QString& words) { keywords = words; }
    // Title, hint and keywords.
    QString searchText() const;
    // Marks the row as what a search found.
    void setFound(bool found);
    bool isFound() const { return found; }

  protected:
    void setTitle(const QString& text);
    // Adds at the right of what is there.
    void addControl(QWidget* control);
    void paintEvent(QPaintEvent* event) override;

  private:
    void setRoomAbove(int room);  // and below

    QString name;
    QString keywords;
    QLabel* titleLabel;
    QLabel* hintLabel;
    QHBoxLayout* line;
    bool found = false;
};

}  // namespace vostel
