#include "core/SystemColors.h"

namespace vostel {

namespace {

struct Row {
    QColor dark;
    QColor light;
};

QColor pick(const Row& row, Appearance appearance) {
    return appearance == Appearance::Dark ? row.dark : row.light;
}

}  // namespace

QColor systemGreen(Appearance appearance) {
    return pick({QColor(48, 209, 88), QColor(36, 160, 70)}, appearance);
}

QColor systemBlue(Appearance appearance) {
    return pick({QColor(64, 156, 255), QColor(0, 112, 230)}, appearance);
}

QColor labelColor(Appearance appearance) {
    return pick({QColor(255, 255, 255, 230), QColor(0, 0, 0, 217)}, appearance);
}

QColor tertiaryLabelColor(Appearance appearance) {
    return pick({QColor(255, 255, 255, 48), QColor(0, 0, 0, 38)}, appearance);
}

}  // namespace vostel
