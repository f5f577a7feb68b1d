#include "wall/bypasshotkey.h"

#include "protocol/command.h"
#include "status/statusread.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>

BypassHotKey::BypassHotKey(WindowServices& session, StatusRead& status)
    : s_(session), status_(status) {
    for (int i = 0; i < 2; ++i)
        QObject::connect(s_.ui().opt_ch4_bypass[i], &QRadioButton::clicked,
                         [this, i] { opt_ch4_bypass_Click(i); });
    for (int i = 0; i < int(s_.ui().btn_tv_fs.size()); ++i)
        QObject::connect(s_.ui().btn_tv_fs[i], &QPushButton::clicked,
                         [this, i] { btn_tv_fs_Click(i); });
}

// Index 0 is "ON" and sends 1: the index runs opposite to the value on purpose.
void BypassHotKey::opt_ch4_bypass_Click(int index) {
    if (!s_.guard())
        return;
    // The status read sets these buttons from the controller's answer, which raises
    // this Click; that must not be sent back.
    if (status_.busy())
        return;
    if (index == 0 || index == 1)
        s_.sendAll(command::line(*protocol::setting("bypass").write, 1 - index));
}

void BypassHotKey::btn_tv_fs_Click(int index) {
    if (!s_.guard())
        return;
    if (s_.request(hotKey_, {command::line(protocol::command(protocol::Action::HotKey), index)},
                   {.all = s_.ui().Check1[2]->isChecked()}))
        status_.readBypass(); // from the selected controller only
}

void BypassHotKey::HandleHotKeyReply(const QString& reply) {
    if (reply::key(reply) == reply::keyOf(protocol::command(protocol::Action::HotKey)) &&
        hotKey_.at(1))
        hotKey_.advance();
}
