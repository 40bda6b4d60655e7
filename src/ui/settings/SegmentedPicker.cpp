#include "ui/settings/SegmentedPicker.h"

#include <algorithm>

#include <QHBoxLayout>

#include "ui/Theme.h"
#include "ui/settings/PaintedButton.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

constexpr int padding = 10;

}  // namespace

class SegmentedPicker::Segment : public PaintedButton {
  public:
    Segment(const QString& name, const QString& text, QWidget* parent)
        : PaintedButton(name, parent) {
        setText(text);
        setCheckable(true);
        setAutoExclusive(true);
    }

    QSize sizeHint() const override {
        const QFontMetrics metrics(font());
        return {metrics.horizontalAdvance(text()) + 2 * padding, metrics.height() + 10};
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Theme& theme = Theme::current();
        const QRectF box = QRectF(rect()).adjusted(2, 2, -2, -2);
        const double corner = SettingsLook::radius - 2;
        painter.setPen(Qt::NoPen);
        if (isChecked()) {
            painter.setBrush(SettingsLook::selection());
            painter.drawRoundedRect(box, corner, corner);
        } else if (underMouse() && isEnabled()) {
            painter.setBrush(theme.hover);
            painter.drawRoundedRect(box, corner, corner);
        }
        if (SettingsLook::showsRing(*this)) {
            SettingsLook::drawRing(painter, QRectF(rect()).adjusted(1, 1, -1, -1), corner + 1);
        }
        painter.setPen(isChecked() ? QColor(Qt::white) : theme.text);
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};

SegmentedPicker::SegmentedPicker(const QString& pickerName, const QStringList& choices,
                                 QWidget* parent)
    : QWidget(parent), name(pickerName) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setChoices(choices);
}

void SegmentedPicker::setChoices(const QStringList& choices) {
    const auto wanted = static_cast<std::size_t>(choices.size());
    while (segments.size() > wanted) {
        segments.back()->deleteLater();
        segments.back()->hide();
        segments.pop_back();
    }
    for (std::size_t i = 0; i < wanted; ++i) {
        const QString text = choices[static_cast<qsizetype>(i)];
        const QString spoken = name + QStringLiteral(": ") + text;
        if (i < segments.size()) {
            segments[i]->setText(text);
            segments[i]->setAccessibleName(spoken);
            segments[i]->updateGeometry();
            continue;
        }
        auto* segment = new Segment(spoken, text, this);
        connect(segment, &QAbstractButton::clicked, this,
                [this, index = static_cast<int>(i)] { Q_EMIT chosen(index); });
        layout()->addWidget(segment);
        segments.push_back(segment);
    }
}

int SegmentedPicker::current() const {
    const auto found = std::find_if(segments.begin(), segments.end(),
                                    [](const Segment* each) { return each->isChecked(); });
    return found != segments.end() ? static_cast<int>(found - segments.begin()) : -1;
}

void SegmentedPicker::setCurrent(int index) {
    const int before = current();
    if (index >= 0 && index < static_cast<int>(segments.size())) {
        segments[static_cast<std::size_t>(index)]->setChecked(true);
    } else if (before >= 0) {
        // An exclusive button cannot be unchecked while it is exclusive.
        Segment* segment = segments[static_cast<std::size_t>(before)];
        segment->setAutoExclusive(false);
        segment->setChecked(false);
        segment->setAutoExclusive(true);
    }
    // Tab leads to the chosen one; where none is, to each.
    for (Segment* segment : segments) {
        const bool stop = segment->isChecked() || current() < 0;
        segment->setFocusPolicy(stop ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

void SegmentedPicker::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::current();
    SettingsLook::drawBox(painter, rect(), theme.panel, theme.border);
}

}  // namespace vostel
