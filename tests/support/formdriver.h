#pragma once

#include "window/form1.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QStringList>
#include <QTest>
#include <QTimer>

// Drives the real window the way an operator does.
namespace driver {

template <typename W>
W* find(Form1& form, const QString& name)
{
    W* widget = form.findChild<W*>(name);
    if (!widget)
        qFatal("no control %s", qPrintable(name));
    return widget;
}

// Lists controllers as a search would (MAC text, address), without running one, and
// selects the first without connecting.
void listDevices(Form1& form, const QStringList& addresses);

// Lists the controllers and presses "Connect"; returns when the connect and the
// refresh that follows are done.
void connectTo(Form1& form, const QStringList& addresses);

// Clicks now; returns when the click's handler has finished.
inline void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

// Clicks from the event loop, for handlers that wait; the test goes on at once.
inline void clickLater(QAbstractButton* button)
{
    QTimer::singleShot(0, button, [button] { button->click(); });
}

// Picks an item as the operator does from the drop-down.
void pick(QComboBox* box, int index);
void pickLater(QComboBox* box, int index);

// Types text into an editable list, one key at a time, then optionally presses Enter.
void type(QComboBox* box, const QString& text, bool enter = false);

} // namespace driver
