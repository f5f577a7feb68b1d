#include "link/lentrun.h"

#include "link/devicelink.h"

#include <QEventLoop>
#include <QTcpSocket>
#include <memory>
#include <utility>
#include <vector>

QStringList runLent(DeviceLink& link, const QList<LentTarget>& targets, int timeoutMs,
                    const std::function<void(ControllerClient& client, qsizetype index)>& prepare,
                    const std::function<void(qsizetype done)>& progress) {
    QStringList failures(targets.size());
    std::vector<std::unique_ptr<ControllerClient>> clients(static_cast<size_t>(targets.size()));
    QList<std::pair<int, QTcpSocket*>> lent;
    qsizetype open = 0;
    qsizetype done = 0;
    QEventLoop loop;
    const auto end = [&](qsizetype i, const QString& failure) {
        failures[i] = failure;
        ++done;
        if (progress)
            progress(done);
        if (--open == 0)
            loop.quit();
    };
    for (qsizetype i = 0; i < targets.size(); ++i) {
        QTcpSocket* socket = link.lend(targets[i].entry);
        ++open;
        if (!socket) {
            end(i, QStringLiteral("%1: not connected").arg(targets[i].address));
            continue;
        }
        lent.append({targets[i].entry, socket});
        auto client = std::make_unique<ControllerClient>(socket, targets[i].address, timeoutMs);
        QObject::connect(client.get(), &ControllerClient::finished, [&end, i] { end(i, {}); });
        QObject::connect(client.get(), &ControllerClient::failed,
                         [&end, i](const QString& why) { end(i, why); });
        clients[static_cast<size_t>(i)] = std::move(client);
    }
    ++open; // held until every sequence is queued, so none ends the loop early
    for (qsizetype i = 0; i < targets.size(); ++i) {
        ControllerClient* client = clients[static_cast<size_t>(i)].get();
        if (!client)
            continue;
        prepare(*client, i);
        if (client->idle())
            emit client->finished(); // nothing to do for this one
    }
    if (--open > 0)
        loop.exec();
    clients.clear();
    // What is left of a reply that came too late is not the reply handlers' business.
    for (const auto& [entry, socket] : lent) {
        socket->readAll();
        link.giveBack(entry);
    }
    return failures;
}
