#pragma once

#include <functional>

class QComboBox;
class QRadioButton;

// The old window's event rules on Qt widgets. A list's Click runs on every pick by the
// user, also of the item already chosen, and when code sets its index; an editable
// list's Change runs on every edit of its text; KeyDown reports Enter as key code 13.
namespace events {

constexpr int KeyEnter = 13;

void onClick(QComboBox* box, std::function<void()> handler);
void onChange(QComboBox* box, std::function<void()> handler);
// Enter is taken by the handler: it never also picks a matching item.
void onKeyDown(QComboBox* box, std::function<void(int keyCode)> handler);

// Sets the list index from code and raises the list's Click. -1 clears the selection;
// any other index outside the list is the list's range error: nothing changes and
// false comes back, so the handler that set it ends there.
bool setListIndex(QComboBox* box, int index);

// Selects an option button from code and raises its Click.
void setOption(QRadioButton* option);

} // namespace events
