#pragma once

#include "simulator.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

// A virtual controller's settings by name: "model", "firmware", "bypass", "bezel.h.a",
// "brightness.d", "trim.h_end.b", "network.mode"; outputs 1..4 are a..d. The one place that knows
// how the controller keeps them.
qint64 setting(const sim::VirtualController& device, const QByteArray& name);
void setSetting(sim::VirtualController& device, const QByteArray& name, qint64 value);
// Every line the controller has received, oldest first.
QStringList linesOf(const sim::VirtualController* device);
// Each keyword with the numbers 1..last: {"RCBH", "RCBV"} -> "RCBH 1", ..., "RCBV 4".
QStringList numbered(const QStringList& keywords, int last = 4);

// The window and virtual controllers on consecutive loopback addresses from `first`, port 23; every
// message box is answered (Yes, else its first button) and recorded.
class Bench {
public:
    Bench(const QString& first, int devices);

    sim::VirtualController& device(int i = 0) { return *sim.controller(i + 1); }
    QStringList addresses() const;
    // Lists the controllers as a search does, `selected` chosen, and presses Connect; returns once
    // the refresh that follows is done, its lines and messages forgotten.
    void connect(int selected = 0);
    // The lines controller i has received since the last call; every line the window wrote to it
    // before the call is among them.
    QStringList lines(int i = 0);
    // Forgets what every controller has received; how many lines all have received since.
    void forget();
    qsizetype received() const;
    // Controller i answers lines starting with `start` with these bytes instead (CR LF not added;
    // empty: no answer at all).
    void answer(int i, const QByteArray& start, const QByteArray& bytes);
    // Runs action inside whatever wait is running, once controller i has received line.
    void onLine(int i, const QByteArray& line, std::function<void()> action);
    // Pushes the chunks from controller i one at a time, each once the window has taken the one
    // before (loopback would join them), calling before() ahead of each.
    void feed(int i, QList<QByteArray> chunks, std::function<void()> before = {});
    // The frames the panel lock disables, all disabled.
    bool locked() const;

    sim::Simulator sim;
    MessageBoxAnswerer boxes;
    Form1 form;
    Controls& ui = form.ui;

private:
    QList<QHash<QByteArray, QByteArray>> answers_;
    QList<int> arrivals_; // chunks the window has received from each controller
};

// The window shown and connected to `devices` controllers from `first`, the first selected; c(n)
// is controller n counted from 1, as the window's list shows them.
struct Connected : Bench {
    explicit Connected(const QString& first, int devices = 4) : Bench(first, devices) {
        form.show();
        connect();
    }
    sim::VirtualController* c(int number) { return &device(number - 1); }
};
