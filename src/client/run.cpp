#include "client/run.h"

#include "link/devicelink.h"

#include <QEventLoop>
#include <QTcpSocket>
#include <QTimer>
#include <utility>

namespace client {

namespace {

void failRunning(const std::vector<std::unique_ptr<ControllerClient>>& clients,
                 const QString& why) {
    for (const auto& client : clients)
        if (client && !client->ended())
            client->fail(why);
}

} // namespace

QStringList runClients(const std::vector<std::unique_ptr<ControllerClient>>& clients,
                       QStringList failures, const Sequence& prepare, const RunOptions& options) {
    QEventLoop loop;
    qsizetype open = 0;
    const auto end = [&](qsizetype i, const QString& failure) {
        failures[i] = failure;
        if (options.ended)
            options.ended(i, failure.isEmpty());
        if (--open == 0)
            loop.quit();
    };
    for (qsizetype i = 0; i < qsizetype(clients.size()); ++i) {
        ControllerClient* client = clients[size_t(i)].get();
        if (!client) {
            if (options.ended)
                options.ended(i, false);
            continue;
        }
        ++open;
        if (options.watch)
            options.watch(i, *client);
        QObject::connect(client, &ControllerClient::finished, &loop, [&end, i] { end(i, {}); });
        QObject::connect(client, &ControllerClient::failed, &loop,
                         [&end, i](const QString& why) { end(i, why); });
    }
    for (qsizetype i = 0; i < qsizetype(clients.size()); ++i)
        if (clients[size_t(i)])
            prepare(*clients[size_t(i)], i);
    const QString late = QStringLiteral("the deadline passed");
    if (options.deadlineMs == 0)
        failRunning(clients, late);
    for (const auto& client : clients)
        if (client)
            client->begin();

    QTimer deadline;
    deadline.setTimerType(Qt::PreciseTimer);
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &loop, [&] { failRunning(clients, late); });
    if (options.deadlineMs > 0 && open > 0)
        deadline.start(options.deadlineMs);
    bool completed = true;
    if (open > 0 && options.wait)
        completed = options.wait([&open] { return open == 0; });
    else if (open > 0)
        loop.exec();
    if (!completed)
        failRunning(clients, QStringLiteral("stopped before the end"));
    return failures;
}

QStringList runOwn(const QList<Target>& targets, int timeoutMs, const Sequence& prepare,
                   const RunOptions& options) {
    std::vector<std::unique_ptr<ControllerClient>> clients;
    for (const Target& t : targets)
        clients.push_back(std::make_unique<ControllerClient>(t.address, timeoutMs));
    return runClients(clients, QStringList(targets.size()), prepare, options);
}

QStringList runLent(DeviceLink& link, const QList<LentTarget>& targets, int timeoutMs,
                    const Sequence& prepare, const RunOptions& options) {
    QStringList failures(targets.size());
    std::vector<std::unique_ptr<ControllerClient>> clients;
    QList<std::pair<int, QTcpSocket*>> lent;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        const int entry = targets[i].entry;
        QTcpSocket* socket = link.lend(entry);
        if (socket) {
            lent.append({entry, socket});
            clients.push_back(std::make_unique<ControllerClient>(
                socket, [&link, entry](const QByteArray& line) { link.write(entry, line); },
                targets[i].address, timeoutMs));
        } else {
            failures[i] = QStringLiteral("%1: not connected").arg(targets[i].address);
            clients.push_back(nullptr);
        }
    }
    failures = runClients(clients, failures, prepare, options);
    clients.clear();
    // What is left of a reply that came too late is not the reply handlers' business.
    for (const auto& [entry, socket] : lent) {
        if (socket->isOpen())
            socket->readAll();
        link.giveBack(entry);
    }
    return failures;
}

} // namespace client
