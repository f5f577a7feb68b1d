#pragma once

#include <functional>

class QComboBox;
class QRadioButton;
class QScrollBar;

// The old window's event rules on Qt widgets. A list's Click runs on every pick by the
// user, also of the item already chosen, and when code sets its index; an editable
// list's Change runs on every edit of its text; KeyDown reports Enter as key code 13.
namespace events {

constexpr int KeyEnter = 13;

// Rules every list follows from its creation: it reacts to the mouse wheel only while
// it has keyboard focus, so scrolling past it never changes a live controller. An
// editable list never picks an item by itself: Enter, Tab and leaving it commit nothing,
// and typed text is never completed.
void followListRules(QComboBox* box);

// Scroll bars take focus by Tab and click; each arrow key, PageUp/PageDown, Home and
// End is one change, in the direction the key points; the wheel needs focus too.
void followBarRules(QScrollBar* bar);

void onClick(QComboBox* box, std::function<void()> handler);
void onChange(QComboBox* box, std::function<void()> handler);
// Sees every key pressed while the list has focus, before the list acts on it; Enter
// is taken by the handler.
void onKeyDown(QComboBox* box, std::function<void(int keyCode)> handler);

// Sets the list index from code and raises the list's Click. -1 clears the selection;
// any other index outside the list is the list's range error: nothing changes and
// false comes back, so the handler that set it ends there.
bool setListIndex(QComboBox* box, int index);

// Enter on a focused scroll bar, taken from the bar.
void onEnter(QScrollBar* bar, std::function<void()> handler);

// Selects an option button from code and raises its Click.
void setOption(QRadioButton* option);

} // namespace events
