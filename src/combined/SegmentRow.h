#pragma once

#include <vector>

#include "ui/settings/SettingsRow.h"

class QAbstractButton;

namespace vostel {

// One item that can be combined: a grip, its title, buttons that move it, and its switch.
class SegmentRow : public SettingsRow {
    Q_OBJECT

  public:
    SegmentRow(const QString& id, const QString& title, QWidget* parent);

    const QString& id() const { return segmentId; }

    void setOn(bool on);
    // The place among all rows, from 0. What cannot go further up or down cannot be asked to.
    void setPlace(int place, int count);
    // While it is dragged.
    void setLifted(bool lifted);

    // In the order in which Tab reaches them.
    std::vector<QWidget*> controls() const;

  Q_SIGNALS:
    void switched(bool on);      // by the user
    void moveAsked(int places);  // by the user: -1 up, 1 down

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QString segmentId;
    QAbstractButton* up;
    QAbstractButton* down;
    QAbstractButton* toggle;
    bool lifted = false;
};

}  // namespace vostel
