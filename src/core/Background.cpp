#include "core/Background.h"

namespace vostel {

Background::Background() {
    pool.setMaxThreadCount(2);
    pool.setExpiryTimeout(5000);
    pool.setThreadPriority(QThread::LowPriority);
    pool.setStackSize(256 * 1024);
}

Background::~Background() {
    pool.clear();
    pool.waitForDone();
}

}  // namespace vostel
