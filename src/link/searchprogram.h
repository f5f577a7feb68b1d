#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// The device search program and the two result files it leaves: MAC.txt, one MAC a
// line, and IP.txt, whose last line holds every address in a field of fifteen
// characters. The window and panomat-ctl run the same program the same way.
namespace search {

inline const QString Program = QStringLiteral("ZEDA.exe");
inline const QString MacFile = QStringLiteral("MAC.txt");
inline const QString IpFile = QStringLiteral("IP.txt");
constexpr int MacLength = 17;

// Beside the running program (a build tree, a copy of the tool's folder); else where an
// installation keeps its private programs. The path beside when neither exists.
QString program();

// The result files stay beside the running program when the search program is there
// too and the folder can be written. Otherwise (installed, or a read-only copy) they
// go to the user's data folder, ~/.local/share/panomat-set.
QString resultFolder(const QString& program);

// The arguments that send the results to folder.
QStringList arguments(const QString& folder);

// All lines of a text file, or nothing when it cannot be opened.
std::optional<QStringList> readLines(const QString& path);

// The MAC texts of MAC.txt's lines.
QStringList macs(const QStringList& macLines);

} // namespace search

// The dotted address of device index from the address line: fifteen characters a
// device, octets at offsets 1, 5, 9 and 13 of its field, each by numeric value.
QString addressFromLine(const QString& line, int index);
