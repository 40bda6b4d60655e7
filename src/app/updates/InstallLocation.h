#pragma once

#include <QString>

namespace vostel {

// The file that is this program for the user: `appImage` where the program runs from the mounted
// image `appDir` (both as the image's runtime sets them in the environment; a program that another
// image started finds them, too), else `program`.
QString programFile(const QString& program, const QString& appImage, const QString& appDir);
// The same of this process.
QString programFile();

// Why an update in place cannot work for a program at this path; empty where it can. `home` is the
// user's home folder, `folderWritable` whether the user may write beside the program.
QString installLocationHint(const QString& path, bool isAppImage, const QString& home,
                            bool folderWritable);
QString installLocationHint();

}  // namespace vostel
