#include "support/formdriver.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>

namespace driver {

void listDevices(Form1& form, const QStringList& addresses)
{
    QComboBox* devices = find<QComboBox>(form, QStringLiteral("cbo_ipaddr"));
    QComboBox* models = find<QComboBox>(form, QStringLiteral("cbo_model"));
    const QSignalBlocker blockDevices(devices);
    const QSignalBlocker blockModels(models);
    devices->clear();
    models->clear();
    form.ip_list.clear();
    for (int i = 0; i < addresses.size(); ++i) {
        devices->addItem(QStringLiteral("02-00-00-00-00-%1").arg(i, 2, 16, QLatin1Char('0')).toUpper());
        models->addItem(QStringLiteral(" %1").arg(i));
        form.ip_list << addresses[i];
    }
    devices->setCurrentIndex(addresses.isEmpty() ? -1 : 0);
    models->setCurrentIndex(-1);
    find<QGroupBox>(form, QStringLiteral("con_interface"))->setEnabled(true);
}

void connectTo(Form1& form, const QStringList& addresses)
{
    listDevices(form, addresses);
    click(find<QPushButton>(form, QStringLiteral("btn_con")));
}

void pick(QComboBox* box, int index)
{
    box->setCurrentIndex(index);
    emit box->activated(index);
}

void pickLater(QComboBox* box, int index)
{
    QTimer::singleShot(0, box, [box, index] { pick(box, index); });
}

void type(QComboBox* box, const QString& text, bool enter)
{
    box->lineEdit()->clear();
    QTest::keyClicks(box->lineEdit(), text);
    if (enter)
        QTest::keyClick(box->lineEdit(), Qt::Key_Return);
}

} // namespace driver
