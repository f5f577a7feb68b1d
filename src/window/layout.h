#pragma once

#include "services/controls.h"

#include <QPoint>
#include <QSize>

// Where the pages' top left corner lies in the window, and the least size of a page.
constexpr QPoint PageCorner(128, 208);
constexpr QSize PageSize(764, 440);

// Creates every control on content with its layouts, captions and initial texts set;
// lists stay empty (start-up fills them).
void buildControls(QWidget* content, Controls& ui);
