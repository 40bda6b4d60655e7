#pragma once

#include <vector>

#include <QWidget>

namespace vostel {

// One of a few choices, all of them visible. One stop of the Tab key; the arrows choose.
class SegmentedPicker : public QWidget {
    Q_OBJECT

  public:
    // `name` is told to assistive technology with each choice.
    SegmentedPicker(const QString& name, const QStringList& choices, QWidget* parent = nullptr);

    // -1: none.
    int current() const;
    void setCurrent(int index);

    // Replaces the texts of the choices; the current one stays when it still exists.
    void setChoices(const QStringList& choices);

  Q_SIGNALS:
    void chosen(int index);  // by the user

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    class Segment;
    QString name;
    std::vector<Segment*> segments;
};

}  // namespace vostel
