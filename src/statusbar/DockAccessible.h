#pragma once

namespace vostel {

class BarItem;
class DockWindow;

// The dock bar for assistive technology: a tool bar with one button for each visible item, named by
// the item's title, described by its value, pressed by a left click. Nothing is made and nothing
// is sent while no assistive technology runs.

// Once for the process; further calls do nothing.
void installDockAccessibility();

// Items came, went or changed places.
void dockItemsChanged(DockWindow& window);
// An item's title or value changed.
void dockItemTextChanged(BarItem& item);

}  // namespace vostel
