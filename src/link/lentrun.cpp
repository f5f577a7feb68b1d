#include "link/lentrun.h"

#include "link/devicelink.h"

#include <QEventLoop>
#include <QTcpSocket>
#include <utility>

QStringList runClients(const std::vector<std::unique_ptr<ControllerClient>>& clients,
                       QStringList failures, const Sequence& prepare,
                       const std::function<void(qsizetype index)>& ended) {
    qsizetype open = 1; // held until every sequence is queued, so none ends the loop early
    QEventLoop loop;
    const auto end = [&](qsizetype i, const QString& failure) {
        failures[i] = failure;
        if (ended)
            ended(i);
        if (--open == 0)
            loop.quit();
    };
    for (qsizetype i = 0; i < static_cast<qsizetype>(clients.size()); ++i) {
        ControllerClient* client = clients[static_cast<size_t>(i)].get();
        if (!client) {
            if (ended)
                ended(i);
            continue;
        }
        ++open;
        QObject::connect(client, &ControllerClient::finished, &loop, [&end, i] { end(i, {}); });
        QObject::connect(client, &ControllerClient::failed, &loop,
                         [&end, i](const QString& why) { end(i, why); });
        prepare(*client, i);
        client->endIfIdle();
    }
    if (--open > 0)
        loop.exec();
    return failures;
}

QStringList runLent(DeviceLink& link, const QList<LentTarget>& targets, int timeoutMs,
                    const Sequence& prepare, const std::function<void(qsizetype done)>& progress) {
    QStringList failures(targets.size());
    std::vector<std::unique_ptr<ControllerClient>> clients;
    QList<std::pair<int, QTcpSocket*>> lent;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        QTcpSocket* socket = link.lend(targets[i].entry);
        if (socket) {
            lent.append({targets[i].entry, socket});
            clients.push_back(
                std::make_unique<ControllerClient>(socket, targets[i].address, timeoutMs));
        } else {
            failures[i] = QStringLiteral("%1: not connected").arg(targets[i].address);
            clients.push_back(nullptr);
        }
    }
    qsizetype done = 0;
    failures = runClients(clients, failures, prepare, [&](qsizetype) {
        if (progress)
            progress(++done);
    });
    clients.clear();
    // What is left of a reply that came too late is not the reply handlers' business.
    for (const auto& [entry, socket] : lent) {
        socket->readAll();
        link.giveBack(entry);
    }
    return failures;
}
