#include "wall/favourites.h"

#include "protocol/command.h"
#include "window/session.h"

#include <QProgressBar>
#include <QPushButton>

Favourites::Favourites(Session& session) : s_(session) {
    for (int slot = 1; slot <= 5; ++slot) {
        QObject::connect(s_.ui.btn_save[slot], &QPushButton::clicked,
                         [this, slot] { btn_save_Click(slot); });
        QObject::connect(s_.ui.btn_recall[slot], &QPushButton::clicked,
                         [this, slot] { btn_recall_Click(slot); });
    }
}

void Favourites::btn_save_Click(int index) {
    if (!s_.guard())
        return;
    s_.sendAll(command::line(QStringLiteral("SFAVE"), index));
}

// The recall's acknowledgement comes through the wall reply handler ("RFAV"). Then the
// bypass, bezel mode and bezel values are read back so the window shows the recalled
// state; the panels stay locked until the completion message is closed.
void Favourites::btn_recall_Click(int index) {
    if (!s_.guard())
        return;
    QProgressBar* progress = s_.ui.ProgressBar1;
    progress->setVisible(true);
    progress->setValue(0);
    s_.LockPanels();
    s_.w.wait_fav = 1;
    s_.sendAll(command::line(QStringLiteral("RFAVE"), index));
    if (!s_.waitFor(s_.w.wait_fav, 2))
        return;
    s_.w.wait_fav = 0;
    s_.ReadBypassBezel();
    if (s_.pump.cancelled())
        return;
    progress->setValue(100);
    s_.plain(QStringLiteral("Recall completed !"));
    progress->setVisible(false);
    s_.UnlockPanels();
}
