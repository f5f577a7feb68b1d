#include "services/events.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPalette>
#include <QRadioButton>
#include <QScrollBar>

namespace events {

namespace {

bool isEnter(const QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

// A focused editable list hands its keys to its line edit by a direct call, so the
// filters sit on the list itself, where a person's key arrives first.
class KeyDownFilter : public QObject {
public:
    KeyDownFilter(QObject* parent, std::function<void(int)> handler)
        : QObject(parent), handler_(std::move(handler)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress)
            return QObject::eventFilter(watched, event);
        const bool enter = isEnter(event);
        handler_(enter ? KeyEnter : static_cast<QKeyEvent*>(event)->key());
        return enter;
    }

private:
    std::function<void(int)> handler_;
};

class InputRules : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* widget = static_cast<QWidget*>(watched);
        if (event->type() == QEvent::Wheel && !widget->hasFocus()) {
            event->ignore(); // on to the page, which may scroll
            return true;
        }
        // Enter in an editable list would pick the item that matches the text.
        auto* box = qobject_cast<QComboBox*>(watched);
        if (box && box->isEditable() && isEnter(event))
            return true;
        return QObject::eventFilter(watched, event);
    }
};

// A focused bar takes every arrow key as a command, yet styles draw it as they draw an
// unfocused one: the focused bar is drawn in the highlight's colours.
class FocusMark : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* widget = static_cast<QWidget*>(watched);
        if (event->type() == QEvent::FocusIn) {
            QPalette marked = widget->palette();
            const QColor highlight = marked.color(QPalette::Active, QPalette::Highlight);
            marked.setColor(QPalette::Active, QPalette::Button, highlight.lighter(160));
            marked.setColor(QPalette::Active, QPalette::Window, highlight.lighter(175));
            widget->setPalette(marked);
        } else if (event->type() == QEvent::FocusOut) {
            widget->setPalette(QPalette());
        }
        return QObject::eventFilter(watched, event);
    }
};

void installRules(QWidget* widget) {
    widget->setFocusPolicy(Qt::StrongFocus); // the wheel alone gives no focus
    widget->installEventFilter(new InputRules(widget));
}

} // namespace

void followListRules(QComboBox* box) {
    installRules(box);
    if (!box->isEditable())
        return;
    box->setCompleter(nullptr);
    // Leaving the text (Tab, a click elsewhere) would pick the item that matches it.
    QObject::disconnect(box->lineEdit(), &QLineEdit::editingFinished, box, nullptr);
}

void followBarRules(QScrollBar* bar) {
    installRules(bar);
    bar->installEventFilter(new FocusMark(bar));
    bar->setInvertedControls(false);
}

void onClick(QComboBox* box, std::function<void()> handler) {
    QObject::connect(box, &QComboBox::activated, box, [h = std::move(handler)] { h(); });
}

void onChange(QComboBox* box, std::function<void()> handler) {
    QObject::connect(box->lineEdit(), &QLineEdit::textEdited, box,
                     [h = std::move(handler)] { h(); });
}

void onKeyDown(QComboBox* box, std::function<void(int)> handler) {
    box->installEventFilter(new KeyDownFilter(box, std::move(handler)));
}

void onEnter(QScrollBar* bar, std::function<void()> handler) {
    bar->installEventFilter(new KeyDownFilter(bar, [h = std::move(handler)](int key) {
        if (key == KeyEnter)
            h();
    }));
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
