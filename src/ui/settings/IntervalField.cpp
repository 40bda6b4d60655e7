#include "ui/settings/IntervalField.h"

#include <algorithm>
#include <cmath>

#include "core/IntervalOptions.h"

namespace vostel {

namespace {

QStringList labelsOf(const std::vector<double>& options) {
    QStringList labels;
    for (const double seconds : options) {
        // A fraction that is not offered is no whole number of seconds.
        const bool known = seconds == 0.25 || seconds == 0.5 || seconds == std::floor(seconds);
        labels << (known ? IntervalOptions::label(seconds)
                         : QStringLiteral("%1s").arg(QString::number(seconds, 'g', 3)));
    }
    return labels;
}

}  // namespace

IntervalField::IntervalField(const QString& fieldName, std::vector<double> options, QWidget* parent)
    : SegmentedPicker(fieldName, labelsOf(options), parent),
      offered(std::move(options)),
      shown(offered) {
    connect(this, &SegmentedPicker::chosen, this,
            [this](int index) { Q_EMIT picked(shown.at(static_cast<std::size_t>(index))); });
}

void IntervalField::setSeconds(double stored) {
    const double seconds = IntervalOptions::bounded(stored);
    std::vector<double> wanted = offered;
    if (std::find(offered.begin(), offered.end(), seconds) == offered.end()) {
        wanted.push_back(seconds);
    }
    if (wanted != shown) {
        shown = wanted;
        setChoices(labelsOf(shown));
    }
    const auto found = std::find(shown.begin(), shown.end(), seconds);
    setCurrent(static_cast<int>(found - shown.begin()));
}

}  // namespace vostel
