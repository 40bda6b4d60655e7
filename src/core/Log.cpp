#include "core/Log.h"

#include <cstdio>

namespace vostel {

void logLine(const QString& text) {
    std::fprintf(stderr, "[Vostel] %s\n", text.toUtf8().constData());
}

}  // namespace vostel
