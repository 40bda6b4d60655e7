#pragma once

#include <QImage>
#include <QString>

namespace vostel {

// Writes the image as a PNG in place of whatever is at the path. A reader sees the old file or the
// new one, never a part; no symbolic link is written through, neither at the path, where it is
// replaced, nor at the temporary file beside it (path + ".tmp"). False when it cannot be written.
bool writeImageFile(const QImage& image, const QString& path);

}  // namespace vostel
