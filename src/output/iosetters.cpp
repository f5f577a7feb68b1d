#include "output/iosetters.h"

#include "output/iobindings.h"
#include "output/iosetup.h"
#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"
#include "services/windowservices.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

IoSetters::IoSetters(WindowServices& session, const IoSetup& page) : s_(session), page_(page) {
    Controls& ui = s_.ui();
    for (int c = 0; c < IoControlCount; ++c) {
        const IoBinding& b = IoBindings[c];
        if (!b.list)
            continue;
        const auto control = IoControl(c);
        events::onClick(b.list(ui), [this, control] { pick(control); });
        if (b.typed)
            events::onKeyDown(b.list(ui), [this, control](int key) { typed(control, key); });
    }
    for (int i = 0; i < 2; ++i)
        QObject::connect(ui.opt_mute[i], &QRadioButton::clicked, ui.opt_mute[i],
                         [this, i] { opt_mute_Click(i); });
}

// The list's pick, or option index, is the value's offset from the setting's minimum.
void IoSetters::sendSetting(IoControl control, int index) {
    const IoBinding& b = IoBindings[control];
    s_.sendTo(s_.ui().chk_io[b.allIpBox]->isChecked(),
              command::line(*b.bound().write, index + int(b.bound().min)));
}

// A pick raised while the page is read or reset is the page's doing, not the operator's.
void IoSetters::pick(IoControl control) {
    const IoBinding& b = IoBindings[control];
    if (!s_.guard(b.refusal) || page_.busy())
        return;
    sendSetting(control, b.list(s_.ui())->currentIndex());
}

void IoSetters::opt_mute_Click(int index) {
    if (!s_.guard(IoBindings[Mute].refusal) || page_.busy())
        return;
    sendSetting(Mute, index);
}

// Enter sends the text exactly as typed once it passes the loose real-valued bounds
// minimum - 1 < v < maximum + 1 ("20.9" and "-0.5" pass). Typing is not held back by a
// read or reset of the page: only picks are.
void IoSetters::typed(IoControl control, int keyCode) {
    const IoBinding& b = IoBindings[control];
    if (!s_.guard(b.refusal) || keyCode != events::KeyEnter)
        return;
    const protocol::Setting& setting = b.bound();
    const QString text = b.list(s_.ui())->lineEdit()->text();
    if (!legacy::typedWithin(text, double(setting.min) - 1, double(setting.max) + 1)) {
        s_.exclamation(QStringLiteral("Please type %1 ~ %2").arg(setting.min).arg(setting.max));
        return;
    }
    s_.sendTo(s_.ui().chk_io[b.allIpBox]->isChecked(), command::line(*setting.write, text));
}
