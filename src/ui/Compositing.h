#pragma once

namespace vostel {

// Whether windows can be translucent right now: on X11 only while a compositing manager runs.
bool isComposited();

}  // namespace vostel
