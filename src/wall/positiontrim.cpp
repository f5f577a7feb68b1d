#include "wall/positiontrim.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QInputDialog>

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>

namespace {

// The bars in groups of four, one group a family kept per output: bar i shows the
// trim of family i / 4 for output i % 4 + 1.
constexpr const char* Families[4] = {"trim.h_start", "trim.h_end", "trim.v_start", "trim.v_end"};

const protocol::Setting& trimOf(int bar) {
    return protocol::setting(Families[bar / 4], bar % 4 + 1);
}

// A bar runs from the trim's minimum at 0 to its maximum; Zero is no trim.
const int Zero = int(-trimOf(0).min);

} // namespace

PositionTrim::PositionTrim(WindowServices& session) : s_(session) {
    for (int i = 0; i < 16; ++i) {
        QScrollBar* bar = s_.ui().HS_A[i];
        bar->setSingleStep(1);
        bar->setPageStep(1);
        // A drag shows its value as it goes (Scroll) and sends once, where the thumb is
        // let go (Change); clicks and code send at once.
        bar->setTracking(false);
        QObject::connect(bar, &QScrollBar::sliderMoved, [this, i] { HS_A_Scroll(i); });
        QObject::connect(bar, &QScrollBar::valueChanged, [this, i] { HS_A_Change(i); });
        events::onEnter(bar, [this, i] { typeTrim(i); });
        bar->setToolTip(QStringLiteral("Arrows, PageUp/PageDown, Home and End move the trim by "
                                       "one step; Enter types it"));
    }
    for (int i = 0; i < 2; ++i)
        QObject::connect(s_.ui().btn_posi[i], &QPushButton::clicked,
                         [this, i] { btn_posi_Click(i); });
}

void PositionTrim::showTrim(int index, int position) {
    s_.ui().value_posi[index]->setText(position < Zero ? u'-' + legacy::plainText(Zero - position)
                                                       : u'+' + legacy::plainText(position - Zero));
}

void PositionTrim::HS_A_Change(int index) {
    if (!s_.guard())
        return;
    // Bars moved by a read-back send nothing.
    if (!read_.idle())
        return;
    const int output = index % 4 + 1;
    const int position = s_.ui().HS_A[index]->value();
    showTrim(index, position);
    s_.send(command::line(command::writer(trimOf(index), position < Zero), output,
                          qAbs(position - Zero)));
}

void PositionTrim::HS_A_Scroll(int index) {
    if (!s_.guard())
        return;
    showTrim(index, s_.ui().HS_A[index]->sliderPosition());
}

// A typed trim moves the bar, whose Change sends it as a move by hand would.
void PositionTrim::typeTrim(int index) {
    if (!s_.guard())
        return;
    QScrollBar* bar = s_.ui().HS_A[index];
    const protocol::Setting& trim = trimOf(index);
    bool ok = false;
    const int typed = QInputDialog::getInt(
        bar->window(), QStringLiteral("Trim"),
        QStringLiteral("%1, %2 (%3):")
            .arg(QLatin1String(Controls::TrimCaptions[index / 4]),
                 protocol::outputName(index % 4 + 1),
                 protocol::rangeText(trim)),
        bar->value() - Zero, int(trim.min), int(trim.max), 1, &ok);
    if (ok && !s_.cancelled())
        bar->setValue(typed + Zero);
}

void PositionTrim::btn_posi_Click(int index) {
    if (!s_.guard())
        return;
    if (index == 0) {
        ReadPositionTrim();
    } else if (index == 1) {
        // Only bars that really move raise their Change and send.
        for (QScrollBar* bar : s_.ui().HS_A)
            bar->setValue(Zero);
    }
}

void PositionTrim::ReadPositionTrim() {
    if (!s_.guard())
        return;
    Controls& ui = s_.ui();
    const BusyButtons busy{ui.btn_posi[0], ui.btn_posi[1]};
    ui.ProgressBar1->setVisible(true);
    ui.ProgressBar1->setValue(0);
    const bool read = s_.request(read_, 16, [](int k) { return protocol::readLine(trimOf(k)); },
                                 {.answered = [&ui](int replies) {
                                     if (replies % 4 == 0)
                                         ui.ProgressBar1->setValue(replies / 4 * 25);
                                 }});
    if (read)
        ui.ProgressBar1->setVisible(false);
}

// The output is the one asked for at this step; the reply's characters 5-7 are not
// looked at. Characters 8-11 give the sign, 12-14 the magnitude.
void PositionTrim::HandleTrimReply(const QString& reply) {
    const int step = read_.value();
    if (step < 1 || step > 16)
        return;
    const protocol::Command& read = *trimOf(step - 1).read;
    if (reply::key(reply) != reply::keyOf(read))
        return;
    const long magnitude = legacy::roundHalfEven(legacy::val(reply::longValue(reply)));
    const bool plus = reply::longKey(reply) == reply::secondKeyOf(read);
    const long position = plus ? Zero + magnitude : Zero - magnitude;
    QScrollBar* bar = s_.ui().HS_A[step - 1];
    // Outside the bar's range the reply is dropped and the read keeps waiting.
    if (position < bar->minimum() || position > bar->maximum())
        return;
    bar->setValue(static_cast<int>(position));
    s_.ui().value_posi[step - 1]->setText((plus ? u'+' : u'-') + legacy::plainText(magnitude));
    read_.advance();
}
