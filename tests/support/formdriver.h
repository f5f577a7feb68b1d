#pragma once

#include "window/form1.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QStringList>
#include <QTest>
#include <QTimer>
#include <functional>

// Drives the real window the way an operator does.
namespace driver {

template <typename W> W* find(Form1& form, const QString& name) {
    W* widget = form.findChild<W*>(name);
    if (!widget)
        qFatal("no control %s", qPrintable(name));
    return widget;
}

// Lists controllers as a search would (MAC text, address), without running one, and selects the
// first without connecting.
void listDevices(Form1& form, const QStringList& addresses);

// A handler that waits for a reply runs a nested event loop: while it waits, the test's own code
// after the click cannot run, and a QTRY after a clickLater would spin inside that wait for ever.
// To act while a handler waits, register watchers before the click: each runs once, from inside the
// handler's loop, as soon as its condition holds. A watcher must return promptly (check, then push
// a reply or press a box); the handler goes on only after it has returned. Chain a later step with
// QTimer::singleShot or another watcher. Watchers die with the context (the form, usually).
void when(QObject* context, std::function<bool()> condition, std::function<void()> action);

// Clicks and returns when the handler, its waits and message boxes are done. A handler still
// waiting after the deadline has every wait of its window ended, and the test fails instead of
// hanging.
void click(QAbstractButton* button, int deadlineSeconds = 20);

// Picks an item as the operator does: a click on the arrow opens the list, then the item is pointed
// at and taken with Enter.
void pick(QComboBox* box, int index);

// Focuses a control and presses one key, as a person does.
void key(QWidget* control, Qt::Key key);

// Clicks a point of a control with the left button.
void clickAt(QWidget* control, QPoint point);

// Focuses an editable list, selects its text and types over it one key at a time, then optionally
// presses Enter. Keys go to the focus widget, where a person's keys arrive.
void type(QComboBox* box, const QString& text, bool enter = false);

} // namespace driver
