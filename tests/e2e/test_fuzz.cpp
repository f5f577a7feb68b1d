#include "support/bench.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

using driver::find;

namespace {

class Fuzzer {
public:
    Fuzzer(Form1& form, sim::VirtualController& device, quint32 seed)
        : form_(form), device_(device), random_(seed) {
        device_.setReplyHook([this](const QByteArray&, const QByteArray& reply) {
            const QByteArray bare = reply.chopped(qMin<qsizetype>(2, reply.size()));
            if (!bare.isEmpty() && !corpus_.contains(bare))
                corpus_ << bare;
            return bare.isEmpty() ? bare : answer(bare);
        });
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
        return QString::asprintf("%d steps, %d replies, %d presses, %d stops, deepest nesting %d",
                                 steps_, replies_, presses_, stops_, deepest_);
    }

private:
    int pick(int n) { return int(random_.bounded(n)); }

    // A reply: most often the right one, else cut, bit-flipped, garbage, doubled, an endless
    // number, or nothing at all.
    QByteArray answer(const QByteArray& reply) {
        ++replies_;
        const int roll = pick(100);
        if (roll < 55)
            return reply + "\r\n";
        const QByteArray mutated = mutate(reply, roll);
        return mutated.isNull() ? mutated : mutated + "\r\n";
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
            return reply + "\r\n" + corpus_.at(pick(int(corpus_.size())));
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
        if (corpus_.isEmpty())
            return;
        const QByteArray base = corpus_.at(pick(int(corpus_.size())));
        device_.push(mutate(base, 55 + pick(45)) + (pick(2) ? "\r\n" : ""));
    }

    // A person's press: only where no message box is open, on an enabled button.
    void press() {
        if (QApplication::activeModalWidget())
            return;
        QAbstractButton* button = form_.services().isConnected()
                                      ? buttons_.at(pick(int(buttons_.size())))
                                      : form_.ui.btn_con;
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
        if (!form_.services().pump().waiting() || QApplication::activeModalWidget())
            return;
        ++stops_;
        settling_ = true;
        stop_->click();
        QTimer::singleShot(150, [this] {
            settling_ = false;
            if (form_.services().pump().waiting() && failure_.isEmpty())
                failure_ =
                    QStringLiteral("a wait went on after Stop waiting (step %1)").arg(steps_);
        });
    }

    void finish() {
        if (done_)
            return;
        if (form_.services().pump().waiting() && !QApplication::activeModalWidget())
            stop_->click();
        QTimer::singleShot(300, [this] {
            if (form_.services().pump().waiting() || QApplication::activeModalWidget()) {
                finish(); // a box still up, or a wait that began inside it
                return;
            }
            done_ = true;
        });
    }

    Form1& form_;
    sim::VirtualController& device_;
    QList<QByteArray> corpus_; // the controller's replies seen so far
    QRandomGenerator random_;
    QList<QAbstractButton*> buttons_;
    QAbstractButton* stop_ = nullptr;
    QElapsedTimer clock_;
    bool settling_ = false, done_ = false;
    int seconds_ = 0, nesting_ = 0, deepest_ = 0;
    int steps_ = 0, replies_ = 0, presses_ = 0, stops_ = 0;
    QString failure_;
};

} // namespace

// Random and mutated replies against the real window, for a bounded time (PANOMAT_FUZZ_SECONDS, 20
// by default; PANOMAT_FUZZ_SEED repeats a run). Replies come while handlers wait and while idle;
// buttons are pressed during waits, waits are nested; at intervals "Stop waiting" must bring every
// wait to an end. Run under the sanitizers too. Addresses in 127.50.0.0/16.
class TestFuzz : public QObject {
    Q_OBJECT
private slots:
    void replyPath() {
        const int seconds = qEnvironmentVariableIsSet("PANOMAT_FUZZ_SECONDS")
                                ? qEnvironmentVariableIntValue("PANOMAT_FUZZ_SECONDS")
                                : 20;
        const quint32 seed = qEnvironmentVariableIsSet("PANOMAT_FUZZ_SEED")
                                 ? quint32(qEnvironmentVariableIntValue("PANOMAT_FUZZ_SEED"))
                                 : QRandomGenerator::global()->generate();
        qInfo("seed %u (PANOMAT_FUZZ_SEED repeats it)", seed);

        Bench bench("127.50.0.1", 2); // the second listed, never selected
        Form1& form = bench.form;
        form.show();
        driver::listDevices(form, bench.addresses());
        Fuzzer fuzzer(form, bench.device(), seed);
        fuzzer.run(seconds);
        QTRY_VERIFY_WITH_TIMEOUT(fuzzer.done(), (seconds + 60) * 1000);
        qInfo("%s", qPrintable(fuzzer.summary()));
        QVERIFY2(fuzzer.failure().isEmpty(), qPrintable(fuzzer.failure()));
        QVERIFY(!form.services().pump().waiting());
    }
};

QTEST_MAIN(TestFuzz)

#include "test_fuzz.moc"
