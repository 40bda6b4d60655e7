#pragma once

#include <QString>

namespace vostel {

// One line on standard error, "[Vostel] " before it, without waiting for who reads it; the last
// ones are kept for the diagnostics. Never give it a secret.
void logLine(const QString& text);

}  // namespace vostel
