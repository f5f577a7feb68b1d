#include "support/formdriver.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QGroupBox>
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
    for (int i = 0; i < addresses.size(); ++i) {
        devices->addItem(
            QStringLiteral("02-00-00-00-00-%1").arg(i, 2, 16, QLatin1Char('0')).toUpper());
        models->addItem(QStringLiteral(" %1").arg(i));
    }
    form.services().setAddresses(addresses);
    devices->setCurrentIndex(addresses.isEmpty() ? -1 : 0);
    models->setCurrentIndex(-1);
    find<QGroupBox>(form, QStringLiteral("con_interface"))->setEnabled(true);
}

namespace {

// A person's keys reach the focus widget of the active window.
QWidget* focusOn(QWidget* control) {
    QWidget* window = control->window();
    if (QApplication::activeWindow() != window) {
        window->show();
        window->activateWindow();
        if (!QTest::qWaitFor([window] { return QApplication::activeWindow() == window; }))
            qFatal("the window did not become active");
    }
    control->setFocus(Qt::OtherFocusReason);
    if (QApplication::focusWidget() != control)
        qFatal("%s takes no focus", qPrintable(control->objectName()));
    return control;
}

// A key goes to the widget that has focus when it is pressed: once a handler has disabled the list
// (offline), the rest of the keys go elsewhere. A closed message box hands activation back to the
// window, as a window manager does before the next key.
void toFocus(QWidget* window, const std::function<void(QWidget*)>& press) {
    if (!QApplication::activeWindow()) {
        window->activateWindow();
        (void)QTest::qWaitFor([window] { return QApplication::activeWindow() == window; });
    }
    if (QWidget* focus = QApplication::focusWidget())
        press(focus);
}

} // namespace

void pick(QComboBox* box, int index) {
    clickAt(box, QPoint(box->width() - 6, box->height() / 2)); // on the arrow
    QAbstractItemView* list = box->view();
    if (!list->isVisible())
        qFatal("%s did not open", qPrintable(box->objectName()));
    list->setCurrentIndex(box->model()->index(index, box->modelColumn())); // pointed at
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
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
        bool returned = false, expired = false;
    };
    auto state = std::make_shared<State>();
    auto* form = dynamic_cast<Form1*>(button->window());
    QTimer::singleShot(deadlineSeconds * 1000, button, [form, state] {
        if (state->returned || !form)
            return;
        state->expired = true;
        form->services().pump().cancel();
    });
    button->click(); // does nothing on a disabled button, like a real click
    state->returned = true;
    if (state->expired)
        QTest::qFail("the handler was still waiting at the deadline", __FILE__, __LINE__);
}

void key(QWidget* control, Qt::Key key) {
    QTest::keyClick(focusOn(control), key);
}

void clickAt(QWidget* control, QPoint point) {
    focusOn(control);
    QTest::mouseClick(control, Qt::LeftButton, {}, point);
}

void type(QComboBox* box, const QString& text, bool enter) {
    QWidget* window = focusOn(box)->window();
    toFocus(window, [](QWidget* focus) { QTest::keyPress(focus, Qt::Key_Control); });
    toFocus(window, [](QWidget* focus) { QTest::keyClick(focus, Qt::Key_A, Qt::ControlModifier); });
    toFocus(window, [](QWidget* focus) { QTest::keyRelease(focus, Qt::Key_Control); });
    for (const QChar c : text)
        toFocus(window, [c](QWidget* focus) { QTest::keyClick(focus, c.toLatin1()); });
    if (enter)
        toFocus(window, [](QWidget* focus) { QTest::keyClick(focus, Qt::Key_Return); });
}

} // namespace driver
