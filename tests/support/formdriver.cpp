#include "support/formdriver.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <memory>

namespace driver {

void listDevices(Form1& form, const QStringList& addresses) {
    QComboBox* devices = find<QComboBox>(form, QStringLiteral("cbo_ipaddr"));
    QComboBox* models = find<QComboBox>(form, QStringLiteral("cbo_model"));
    const QSignalBlocker blockDevices(devices);
    const QSignalBlocker blockModels(models);
    devices->clear();
    models->clear();
    form.ip_list.clear();
    for (int i = 0; i < addresses.size(); ++i) {
        devices->addItem(
            QStringLiteral("02-00-00-00-00-%1").arg(i, 2, 16, QLatin1Char('0')).toUpper());
        models->addItem(QStringLiteral(" %1").arg(i));
        form.ip_list << addresses[i];
    }
    devices->setCurrentIndex(addresses.isEmpty() ? -1 : 0);
    models->setCurrentIndex(-1);
    find<QGroupBox>(form, QStringLiteral("con_interface"))->setEnabled(true);
}

void connectTo(Form1& form, const QStringList& addresses) {
    listDevices(form, addresses);
    click(find<QPushButton>(form, QStringLiteral("btn_con")));
}

void pick(QComboBox* box, int index) {
    box->setCurrentIndex(index);
    emit box->activated(index);
}

void when(QObject* context, std::function<bool()> condition, std::function<void()> action) {
    auto* poll = new QTimer(context);
    poll->setInterval(2);
    QObject::connect(poll, &QTimer::timeout, context,
                     [poll, condition = std::move(condition), action = std::move(action)] {
                         if (!condition())
                             return;
                         poll->stop();
                         poll->deleteLater();
                         action();
                     });
    poll->start();
}

void click(QAbstractButton* button, int deadlineSeconds) {
    struct State {
        bool returned = false;
        bool expired = false;
    };
    auto state = std::make_shared<State>();
    auto* form = dynamic_cast<Form1*>(button->window());
    QTimer::singleShot(deadlineSeconds * 1000, button, [form, state] {
        if (state->returned || !form)
            return;
        state->expired = true;
        form->pump.cancel();
    });
    button->click(); // does nothing on a disabled button, like a real click
    state->returned = true;
    if (state->expired)
        QTest::qFail("the handler was still waiting at the deadline", __FILE__, __LINE__);
}

void type(QComboBox* box, const QString& text, bool enter) {
    box->lineEdit()->clear();
    QTest::keyClicks(box->lineEdit(), text);
    if (enter)
        QTest::keyClick(box->lineEdit(), Qt::Key_Return);
}

} // namespace driver
