#pragma once

#include "services/windowservices.h"

#include <QString>

// The status read: power, model, bypass, bezel mode and firmware of the selected
// controller, shown on the system buttons, the model list, the wall page's options and
// the title. Other procedures borrow its reads and its step, and the option and list
// handlers it sets stay silent while it runs.
class StatusRead {
public:
    explicit StatusRead(WindowServices& session);

    void ReadStatus();
    // The single reads, each answered through the status reply handler.
    bool readBypass();
    bool readBezelMode();
    // Bypass, then bezel mode; between runs after the bypass reply.
    bool readBypassThenBezelMode(const std::function<void()>& between);
    // A power switch, answered by "POWE" as the status read's first reply is.
    bool switchPower(bool on, bool all);

    // The read is setting the controls, not the operator.
    bool busy() const { return !step_.idle(); }

    void HandleStatusReply(const QString& reply);

private:
    WindowServices& s_;
    WaitStep step_{"Status read"};
};
