#include "wall/favourites.h"

#include "protocol/command.h"

#include <QProgressBar>
#include <QPushButton>

Favourites::Favourites(WindowServices& session, std::function<void()> readBack)
    : s_(session), readBack_(std::move(readBack)) {
    for (int slot = 1; slot < int(s_.ui().btn_save.size()); ++slot) {
        QObject::connect(s_.ui().btn_save[slot], &QPushButton::clicked,
                         [this, slot] { btn_save_Click(slot); });
        QObject::connect(s_.ui().btn_recall[slot], &QPushButton::clicked,
                         [this, slot] { btn_recall_Click(slot); });
    }
}

void Favourites::btn_save_Click(int index) {
    if (!s_.guard())
        return;
    s_.sendAll(command::line(protocol::command(protocol::Action::StoreFavourite), index));
}

// Then the bypass, bezel mode and bezel values are read back so the window shows the
// recalled state; the panels stay locked until the completion message is closed.
void Favourites::btn_recall_Click(int index) {
    if (!s_.guard())
        return;
    QProgressBar* progress = s_.ui().ProgressBar1;
    progress->setVisible(true);
    progress->setValue(0);
    s_.LockPanels();
    if (!s_.request(recall_,
                    {command::line(protocol::command(protocol::Action::RecallFavourite), index)},
                    {.all = true}))
        return;
    readBack_();
    if (s_.cancelled())
        return;
    progress->setValue(100);
    s_.plain(QStringLiteral("Recall completed !"));
    progress->setVisible(false);
    s_.UnlockPanels();
}

// Any stored slot releases a recall, not only the one asked for: its three digits.
void Favourites::HandleRecallReply(const QString& reply) {
    const protocol::Command& recall = protocol::command(protocol::Action::RecallFavourite);
    const QString slot = reply::value(reply);
    bool stored = false;
    for (int n = recall.args[0].min; n <= recall.args[0].max; ++n)
        stored = stored || slot == QStringLiteral("%1").arg(n, 3, 10, QLatin1Char('0'));
    if (reply::key(reply) == reply::keyOf(recall) && recall_.at(1) && stored)
        recall_.advance();
}
