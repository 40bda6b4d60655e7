#pragma once

namespace vostel {

class Background;

// Gives memory back that is not needed any more, after something large is gone (a window) or done
// (the start): what the allocator keeps for later, and the code of libraries, which comes back page
// by page when it runs again. Takes some milliseconds, on any thread.
void giveBackMemory();
// The same off the main thread.
void giveBackMemory(Background& background);

}  // namespace vostel
