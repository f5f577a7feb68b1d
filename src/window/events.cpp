#include "window/events.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRadioButton>

namespace events {

namespace {

class KeyDownFilter : public QObject {
public:
    KeyDownFilter(QObject* parent, std::function<void(int)> handler)
        : QObject(parent), handler_(std::move(handler)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress)
            return QObject::eventFilter(watched, event);
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
        handler_(enter ? KeyEnter : key);
        return enter;
    }

private:
    std::function<void(int)> handler_;
};

} // namespace

void onClick(QComboBox* box, std::function<void()> handler) {
    QObject::connect(box, &QComboBox::activated, box, [h = std::move(handler)] { h(); });
}

void onChange(QComboBox* box, std::function<void()> handler) {
    QObject::connect(box->lineEdit(), &QLineEdit::textEdited, box,
                     [h = std::move(handler)] { h(); });
}

void onKeyDown(QComboBox* box, std::function<void(int)> handler) {
    box->lineEdit()->installEventFilter(new KeyDownFilter(box, std::move(handler)));
}

bool setListIndex(QComboBox* box, int index) {
    if (index < -1 || index >= box->count())
        return false;
    box->setCurrentIndex(index);
    emit box->activated(index);
    return true;
}

void setOption(QRadioButton* option) {
    option->setChecked(true);
    emit option->clicked(true);
}

} // namespace events
