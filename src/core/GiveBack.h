#pragma once

namespace vostel {

// Gives memory back that is not needed any more, after something large is gone (a window) or done
// (the start): what the allocator keeps for later, and the code of libraries, which comes back page
// by page when it runs again. A few milliseconds; main thread.
void giveBackMemory();

}  // namespace vostel
