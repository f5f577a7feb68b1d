#include "simulator.h"
#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QTest>

using driver::find;

// Random and mutated replies against the real window, for a bounded time
// (PANOMAT_FUZZ_SECONDS, 20 by default; PANOMAT_FUZZ_SEED repeats a run). Replies come
// while handlers wait and while idle; buttons are pressed during waits, waits are nested;
// at intervals "Stop waiting" must bring every wait to an end. Run under the sanitizers
// too. Addresses in 127.50.0.0/16.
class TestFuzz : public QObject {
    Q_OBJECT
private slots:
    void replyPath();
};

namespace {

// What a controller answers to each command, asked of a virtual controller.
QHash<QString, QByteArray> replyCorpus() {
    sim::Simulator wall;
    QHash<QString, QByteArray> corpus;
    if (!wall.start(QHostAddress(QStringLiteral("127.50.0.9")), 1))
        return corpus;
    QTcpSocket client;
    client.connectToHost(QStringLiteral("127.50.0.9"), 23);
    if (!client.waitForConnected(2000))
        return corpus;
    const QStringList commands =
        QStringLiteral(
            "RBEZ RBRI RBY RCBH RCBV RCHE RCHS RCON RCVE RCVS RFAVE RHUE RIPM RLINK RMDN RMUTE "
            "ROSDD ROSDG ROSDH ROSDT ROSDV RPOW RRES RSAT RVER SCBH SCBV SCO SHOT SIMRE SMNC "
            "SOSDR SPIRE SWDE")
            .split(u' ');
    for (const QString& command : commands) {
        client.write((command + QStringLiteral(" 1 1 1\r\n")).toLatin1());
        QByteArray reply;
        (void)QTest::qWaitFor([&] { return (reply += client.readAll()).endsWith("\r\n"); }, 1000);
        corpus.insert(command, reply.chopped(qMin<qsizetype>(2, reply.size())));
    }
    return corpus;
}

class Fuzzer {
public:
    Fuzzer(Form1& form, FakeController& device, QHash<QString, QByteArray> corpus, quint32 seed)
        : form_(form), device_(device), corpus_(std::move(corpus)), random_(seed) {
        for (auto it = corpus_.cbegin(); it != corpus_.cend(); ++it)
            device_.reply(it.key(), [this, key = it.key()](const QString&) { return answer(key); });
        for (const char* name :
             {"btn_sys_refresh",  "btn_panomat_refresh", "btn_panomat_reset", "btn_posi(0)",
              "btn_posi(1)",      "btn_img_rst(5)",      "btn_img_rst(1)",    "btn_img_rst(4)",
              "btn_io_rst(0)",    "btn_io_rst(1)",       "btn_io_rst(2)",     "btn_ip_get",
              "btn_recall(2)",    "btn_save(3)",         "btn_tv_fs(8)",      "btn_panomat_send",
              "btn_H_Bezel_send", "btn_sys_fac_rst",     "power_ctl(1)",      "btn_ip_relink",
              "btn_discon"})
            buttons_ << find<QAbstractButton>(form_, QLatin1String(name));
        stop_ = find<QAbstractButton>(form_, QStringLiteral("btn_stop_waiting"));
    }

    void run(int seconds) {
        clock_.start();
        seconds_ = seconds;
        next();
    }
    bool done() const { return done_; }
    QString failure() const { return failure_; }
    QString summary() const {
        return QStringLiteral("%1 steps, %2 chunks pushed, %3 replies (%4 mutated), %5 presses, "
                              "%6 stops, deepest nesting %7")
            .arg(steps_)
            .arg(pushes_)
            .arg(replies_)
            .arg(mutated_)
            .arg(presses_)
            .arg(stops_)
            .arg(deepest_);
    }

private:
    int pick(int n) { return int(random_.bounded(n)); }

    // A reply: most often the right one, else cut, bit-flipped, garbage, doubled, an
    // endless number, or nothing at all.
    QByteArray answer(const QString& key) {
        ++replies_;
        QByteArray reply = corpus_.value(key);
        const int roll = pick(100);
        if (roll < 55)
            return reply;
        ++mutated_;
        return mutate(reply, roll);
    }

    QByteArray mutate(QByteArray reply, int roll) {
        if (roll < 65)
            return reply.left(pick(int(reply.size()) + 1));
        if (roll < 75) {
            for (int i = 0, n = 1 + pick(4); i < n && !reply.isEmpty(); ++i)
                reply[pick(int(reply.size()))] = char(random_.bounded(256));
            return reply;
        }
        if (roll < 82) {
            QByteArray garbage(pick(300), Qt::Uninitialized);
            for (char& c : garbage)
                c = char(random_.bounded(256));
            return garbage;
        }
        if (roll < 88)
            return reply + "\r\n" + corpus_.values().at(pick(int(corpus_.size())));
        if (roll < 94)
            return reply.left(4) + QByteArray(20 + pick(40), '9');
        return QByteArray(); // silence
    }

    void next() {
        if (clock_.elapsed() > seconds_ * 1000) {
            finish();
            return;
        }
        // The next step fires inside whatever wait this one starts.
        QTimer::singleShot(pick(6), [this] { next(); });
        ++steps_;
        if (settling_)
            return;
        const int roll = pick(100);
        if (roll < 40)
            push();
        else if (roll < 45 || nesting_ >= 4)
            stopAndCheck();
        else
            press();
    }

    void push() {
        ++pushes_;
        const QByteArray base = corpus_.values().at(pick(int(corpus_.size())));
        device_.push(mutate(base, 55 + pick(45)) + (pick(2) ? "\r\n" : ""));
    }

    // A person's press: only where no message box is open, on an enabled button.
    void press() {
        if (QApplication::activeModalWidget())
            return;
        QAbstractButton* button =
            form_.session().isConnected() ? buttons_.at(pick(int(buttons_.size()))) : form_.ui.btn_con;
        if (!button->isEnabled() || !button->isVisible())
            return;
        ++presses_;
        ++nesting_;
        deepest_ = qMax(deepest_, nesting_);
        button->click();
        --nesting_;
    }

    // "Stop waiting" ends every wait; nothing starts until that has been checked.
    void stopAndCheck() {
        if (!form_.session().pump().waiting() || QApplication::activeModalWidget())
            return;
        ++stops_;
        settling_ = true;
        stop_->click();
        QTimer::singleShot(150, [this] {
            settling_ = false;
            if (form_.session().pump().waiting() && failure_.isEmpty())
                failure_ =
                    QStringLiteral("a wait went on after Stop waiting (step %1)").arg(steps_);
        });
    }

    void finish() {
        if (done_)
            return;
        if (form_.session().pump().waiting() && !QApplication::activeModalWidget())
            stop_->click();
        QTimer::singleShot(300, [this] {
            if (form_.session().pump().waiting() || QApplication::activeModalWidget()) {
                finish(); // a box still up, or a wait that began inside it
                return;
            }
            done_ = true;
        });
    }

    Form1& form_;
    FakeController& device_;
    QHash<QString, QByteArray> corpus_;
    QRandomGenerator random_;
    QList<QAbstractButton*> buttons_;
    QAbstractButton* stop_ = nullptr;
    QElapsedTimer clock_;
    int seconds_ = 0;
    bool settling_ = false;
    bool done_ = false;
    int nesting_ = 0;
    int deepest_ = 0;
    int steps_ = 0, pushes_ = 0, replies_ = 0, mutated_ = 0, presses_ = 0, stops_ = 0;
    QString failure_;
};

} // namespace

void TestFuzz::replyPath() {
    const QHash<QString, QByteArray> corpus = replyCorpus();
    QVERIFY2(corpus.size() > 30, "the virtual controller answered the corpus");
    const int seconds = qEnvironmentVariableIsSet("PANOMAT_FUZZ_SECONDS")
                            ? qEnvironmentVariableIntValue("PANOMAT_FUZZ_SECONDS")
                            : 20;
    const quint32 seed = qEnvironmentVariableIsSet("PANOMAT_FUZZ_SEED")
                             ? quint32(qEnvironmentVariableIntValue("PANOMAT_FUZZ_SEED"))
                             : QRandomGenerator::global()->generate();
    qInfo("seed %u (PANOMAT_FUZZ_SEED repeats it)", seed);

    FakeController device(QStringLiteral("127.50.0.1"));
    FakeController other(QStringLiteral("127.50.0.2")); // listed, never selected
    MessageBoxAnswerer boxes;
    Form1 form;
    form.show();
    driver::listDevices(form, {device.address(), other.address()});
    Fuzzer fuzzer(form, device, corpus, seed);
    fuzzer.run(seconds);
    QTRY_VERIFY_WITH_TIMEOUT(fuzzer.done(), (seconds + 60) * 1000);
    qInfo("%s", qPrintable(fuzzer.summary()));
    QVERIFY2(fuzzer.failure().isEmpty(), qPrintable(fuzzer.failure()));
    QVERIFY(!form.session().pump().waiting());
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestFuzz test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_fuzz.moc"
