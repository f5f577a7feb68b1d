#include "wall/favourites.h"

#include "protocol/command.h"

#include <QProgressBar>
#include <QPushButton>

Favourites::Favourites(Session& session, std::function<void()> readBack)
    : s_(session), readBack_(std::move(readBack)) {
    for (int slot = 1; slot <= 5; ++slot) {
        QObject::connect(s_.ui().btn_save[slot], &QPushButton::clicked,
                         [this, slot] { btn_save_Click(slot); });
        QObject::connect(s_.ui().btn_recall[slot], &QPushButton::clicked,
                         [this, slot] { btn_recall_Click(slot); });
    }
}

void Favourites::btn_save_Click(int index) {
    if (!s_.guard())
        return;
    s_.sendAll(command::line(QStringLiteral("SFAVE"), index));
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
    if (!s_.request(recall_, {command::line(QStringLiteral("RFAVE"), index)}, {.all = true}))
        return;
    readBack_();
    if (s_.cancelled())
        return;
    progress->setValue(100);
    s_.plain(QStringLiteral("Recall completed !"));
    progress->setVisible(false);
    s_.UnlockPanels();
}

// Any stored slot releases a recall, not only the one asked for.
void Favourites::HandleRecallReply(const QString& reply) {
    static const QStringList stored = {QStringLiteral("001"), QStringLiteral("002"),
                                       QStringLiteral("003"), QStringLiteral("004"),
                                       QStringLiteral("005")};
    if (reply::key(reply) == QLatin1String("RFAV") && recall_.at(1) &&
        stored.contains(reply::value(reply)))
        recall_.advance();
}
