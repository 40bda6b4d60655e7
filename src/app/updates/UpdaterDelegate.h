#pragma once

#include <QString>

namespace vostel {

// What is told about checks that did not end well: one line of the log each.
class UpdaterDelegate {
  public:
    // Nothing was learned.
    void didAbort(const QString& error) const;
    // An answer came that is no use.
    void didFinishCheck(const QString& error) const;
};

}  // namespace vostel
