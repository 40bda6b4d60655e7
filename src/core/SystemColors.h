#pragma once

#include <QColor>

#include "statusbar/StatusImage.h"

namespace vostel {

// The fixed colours that the program calls the system's, per appearance of the place they land in.
QColor systemGreen(Appearance appearance = Appearance::Dark);
QColor systemBlue(Appearance appearance = Appearance::Dark);
QColor labelColor(Appearance appearance);          // text
QColor tertiaryLabelColor(Appearance appearance);  // empty tracks in popovers

}  // namespace vostel
