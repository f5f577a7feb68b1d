#include "services/waitstatus.h"

#include "services/windowservices.h"

#include <QLabel>

WaitStatus::WaitStatus(WindowServices& session, QLabel* label) : label_(label) {
    label_->setSizePolicy(QSizePolicy::Ignored, label_->sizePolicy().verticalPolicy());
    tick_.setInterval(1000);
    tick_.setTimerType(Qt::PreciseTimer);
    connect(&tick_, &QTimer::timeout, this, &WaitStatus::update);
    show_.setSingleShot(true);
    show_.setInterval(ShowAfterMs);
    connect(&show_, &QTimer::timeout, this, [this] {
        tick_.start();
        update();
    });
    connect(&session.notice(), &WaitNotice::waiting, this,
            [this](const QString& procedure, const QString& reply, const QString& controller) {
                begin(
                    QStringLiteral("%1: waiting for %2 from %3").arg(procedure, reply, controller),
                    QStringLiteral("no reply yet; \"Stop waiting\" (Esc) gives up and goes "
                                   "offline"));
            });
    // A procedure that says what it does as it goes keeps its time.
    connect(&session.notice(), &WaitNotice::working, this,
            [this](const QString& text, const QString& wayOut) {
                if (!show_.isActive() && !tick_.isActive())
                    return begin(text, wayOut);
                waitingFor_ = text;
                wayOut_ = wayOut;
                if (tick_.isActive())
                    update();
            });
    connect(&session.notice(), &WaitNotice::hint, this, &WaitStatus::show);
    connect(&session.notice(), &WaitNotice::ended, this, [this] {
        waitingFor_.clear();
        show_.stop();
        tick_.stop();
        if (!label_->text().isEmpty())
            show({});
    });
}

void WaitStatus::begin(const QString& text, const QString& wayOut) {
    waitingFor_ = text;
    wayOut_ = wayOut;
    since_.start();
    if (tick_.isActive())
        update();
    else
        show_.start();
}

void WaitStatus::update() {
    const qint64 seconds = (since_.elapsed() + 500) / 1000; // ticks come about a second apart
    QString text = QStringLiteral("%1 for %2 s").arg(waitingFor_).arg(seconds);
    if (seconds >= HintAfterS)
        text += QStringLiteral(" - ") + wayOut_;
    show(text);
}

// The label takes the room the status bar has left and no more, so the buttons beside
// it stay whole; what it cannot show is in its tooltip.
void WaitStatus::show(const QString& text) {
    label_->setText(text);
    label_->setToolTip(text);
}
