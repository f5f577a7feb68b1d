#pragma once

#include <QByteArray>

class QTcpSocket;

// Writes `line` to a connected socket at once. When nothing is queued before it, the
// line goes straight to the system: QTcpSocket would switch its write notifier on and
// off again for every line, and each switch wakes the event loop for a pass of its
// own, two wasted passes per request of a read sequence. Whatever the system does not
// take, and every error, is left to QTcpSocket, which queues the rest and reports the
// error as it always does.
void sendLine(QTcpSocket* socket, const QByteArray& line);
