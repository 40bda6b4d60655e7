#include "ui/FigureText.h"

#include <algorithm>

#include <QFontMetricsF>
#include <QPainter>

#include "render/ElidedText.h"

namespace vostel {

namespace {

struct DigitWidths {
    double widest = 0;
    bool equal = true;
};

DigitWidths digitWidths(const QFontMetricsF& metrics) {
    DigitWidths result;
    const double zero = metrics.horizontalAdvance(u'0');
    for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
        const double advance = metrics.horizontalAdvance(digit);
        result.widest = std::max(result.widest, advance);
        result.equal = result.equal && std::abs(advance - zero) < 0.01;
    }
    return result;
}

// Calls draw(x, run) for each run of other characters and each digit; returns the whole width.
template <typename Draw>
double walk(const QFontMetricsF& metrics, const QString& text, double widest, Draw draw) {
    double x = 0;
    for (qsizetype i = 0; i < text.size();) {
        qsizetype end = i + 1;
        if (text[i] >= u'0' && text[i] <= u'9') {
            const double advance = metrics.horizontalAdvance(text[i]);
            draw(x + (widest - advance) / 2, text.mid(i, 1));
            x += widest;
        } else {
            while (end < text.size() && !(text[end] >= u'0' && text[end] <= u'9')) {
                ++end;
            }
            const QString run = text.mid(i, end - i);
            draw(x, run);
            x += metrics.horizontalAdvance(run);
        }
        i = end;
    }
    return x;
}

}  // namespace

double FigureText::width(const QFont& font, const QString& text) {
    const QFontMetricsF metrics(font);
    const DigitWidths digits = digitWidths(metrics);
    return digits.equal ? metrics.horizontalAdvance(text)
                        : walk(metrics, text, digits.widest, [](double, const QString&) {});
}

void FigureText::draw(QPainter& painter, const QRectF& rect, const QFont& font, const QString& text,
                      Qt::Alignment alignment) {
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    const double total = width(font, text);
    if (total > rect.width() + 0.5) {
        painter.drawText(rect, static_cast<int>(alignment | Qt::AlignVCenter),
                         elided(metrics, text, Qt::ElideRight, rect.width()));
        return;
    }
    const DigitWidths digits = digitWidths(metrics);
    const double left = alignment & Qt::AlignRight ? rect.right() - total : rect.left();
    const double baseline = rect.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    if (digits.equal) {
        painter.drawText(QPointF(left, baseline), text);
        return;
    }
    walk(metrics, text, digits.widest,
         [&](double x, const QString& run) { painter.drawText(QPointF(left + x, baseline), run); });
}

}  // namespace vostel
