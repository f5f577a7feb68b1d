#include "support/bench.h"

qint64 setting(const sim::VirtualController& device, const QByteArray& name) {
    return device.state().value(name);
}

void setSetting(sim::VirtualController& device, const QByteArray& name, qint64 value) {
    sim::ControllerState state = device.state();
    state.set(name, value);
    device.setState(state);
}

QStringList linesOf(const sim::VirtualController* device) {
    QStringList lines;
    for (const QByteArray& line : device->received())
        lines << QString::fromLatin1(line);
    return lines;
}

QStringList numbered(const QStringList& keywords, int last) {
    QStringList lines;
    for (const QString& keyword : keywords)
        for (int n = 1; n <= last; ++n)
            lines << keyword + u' ' + QString::number(n);
    return lines;
}

Bench::Bench(const QString& first, int devices) : answers_(devices), arrivals_(devices) {
    QObject::connect(&form.services().link(), &DeviceLink::received, &form, [this](int i) {
        if (i < arrivals_.size())
            ++arrivals_[i];
    });
    if (!sim.start(QHostAddress(first), devices))
        qFatal("%s", qPrintable(sim.errorString()));
    for (int i = 0; i < devices; ++i)
        device(i).setReplyHook([this, i](const QByteArray& line, const QByteArray& reply) {
            for (auto it = answers_[i].cbegin(); it != answers_[i].cend(); ++it)
                if (line.startsWith(it.key()))
                    return it.value();
            return reply;
        });
}

QStringList Bench::addresses() const {
    QStringList addresses;
    for (sim::VirtualController* device : sim.controllers())
        addresses << device->address().toString();
    return addresses;
}

void Bench::connect(int selected) {
    driver::listDevices(form, addresses());
    ui.cbo_ipaddr->setCurrentIndex(selected);
    driver::click(ui.btn_con);
    if (!QTest::qWaitFor([this] { return boxes.texts().contains("Refresh completed !"); }))
        qFatal("the refresh after Connect did not end");
    forget(); // the refresh waited for its replies: its lines are all in; nothing else was sent
    boxes.clear();
}

QStringList Bench::lines(int i) {
    DeviceLink& link = form.services().link();
    // TCP keeps the order: once this marker is in, so is everything before it.
    if (link.isConnected(i)) {
        link.write(i, "MARK\r\n");
        (void)QTest::qWaitFor([&] { return device(i).received().contains("MARK"); });
    } else {
        QTest::qWait(50);
    }
    QStringList lines = linesOf(&device(i));
    lines.removeAll(QStringLiteral("MARK"));
    device(i).clearReceived();
    return lines;
}

void Bench::forget() {
    for (sim::VirtualController* device : sim.controllers())
        device->clearReceived();
}

qsizetype Bench::received() const {
    qsizetype lines = 0;
    for (sim::VirtualController* device : sim.controllers())
        lines += device->received().size();
    return lines;
}

void Bench::answer(int i, const QByteArray& start, const QByteArray& bytes) {
    answers_[i][start] = bytes;
}

void Bench::onLine(int i, const QByteArray& line, std::function<void()> action) {
    driver::when(
        &form, [this, i, line] { return device(i).received().contains(line); }, std::move(action));
}

void Bench::feed(int i, QList<QByteArray> chunks, std::function<void()> before) {
    if (before)
        before();
    const int arrived = arrivals_[i];
    device(i).push(chunks.takeFirst());
    if (!chunks.isEmpty())
        driver::when(
            &form, [this, i, arrived] { return arrivals_[i] > arrived; },
            [this, i, chunks, before] { feed(i, chunks, before); });
}

bool Bench::locked() const {
    return !ui.net_config->isEnabled() && !ui.con_interface->isEnabled() &&
           !ui.sys_setting->isEnabled() && !ui.frame_control[0]->isEnabled();
}
