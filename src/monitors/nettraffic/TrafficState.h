#pragma once

namespace vostel {

// What the traffic helper does. `silent`, `ended` and `missing` last until rates come again.
enum class TrafficState {
    waiting,  // not started, or started and without rates so far
    live,     // rates come
    silent,   // it runs and gives no readings; it was killed and is started again
    ended,    // it ended by itself, and is started again
    missing,  // it cannot be started
};

}  // namespace vostel
