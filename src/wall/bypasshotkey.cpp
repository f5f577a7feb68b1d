#include "wall/bypasshotkey.h"

#include "protocol/command.h"
#include "window/session.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>

BypassHotKey::BypassHotKey(Session& session) : s_(session) {
    for (int i = 0; i < 2; ++i)
        QObject::connect(s_.ui.opt_ch4_bypass[i], &QRadioButton::clicked,
                         [this, i] { opt_ch4_bypass_Click(i); });
    for (int i = 0; i < 24; ++i)
        QObject::connect(s_.ui.btn_tv_fs[i], &QPushButton::clicked,
                         [this, i] { btn_tv_fs_Click(i); });
}

// Index 0 is "ON" and sends 1: the index runs opposite to the value on purpose.
void BypassHotKey::opt_ch4_bypass_Click(int index) {
    if (!s_.guard())
        return;
    // The status read sets these buttons from the controller's answer, which raises
    // this Click; that must not be sent back.
    if (s_.w.wait_status != 0)
        return;
    if (index == 0)
        s_.sendAll(command::line(QStringLiteral("SBY"), 1));
    else if (index == 1)
        s_.sendAll(command::line(QStringLiteral("SBY"), 0));
}

void BypassHotKey::btn_tv_fs_Click(int index) {
    if (!s_.guard())
        return;
    s_.w.wait_hotkey = 1;
    s_.sendTo(s_.ui.Check1[2]->isChecked(), command::line(QStringLiteral("SHOT"), index));
    if (!s_.waitFor(s_.w.wait_hotkey, 2))
        return;
    s_.w.wait_hotkey = 0;
    // The status reply handler sets the bypass buttons from "BYPA" and moves the step
    // from 3 to 4; the read goes to the selected controller only.
    s_.w.wait_status = 3;
    s_.send(command::line(QStringLiteral("RBY")));
    if (!s_.waitFor(s_.w.wait_status, 4))
        return;
    s_.w.wait_status = 0;
}

void BypassHotKey::HandleWallDefaultHotKeyReply(const QString& reply) {
    const QString key = reply::key(reply);
    WaitBytes& w = s_.w;
    if (key == QLatin1String("WDEF") && w.wait_wall_default == 1)
        w.wait_wall_default = 2;
    else if (key == QLatin1String("HOTK") && w.wait_hotkey == 1)
        w.wait_hotkey = 2;
}
