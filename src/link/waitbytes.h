#pragma once

#include <QtGlobal>

// The hand-over between a procedure that waits for a reply and the reply handler that
// releases it. 0 is idle; a plain flag goes 1 -> 2, a sequence counts the reply it
// expects next. Only the sender sets a byte to its first step; only handlers advance
// it. Nothing resets them on disconnect: a broken sequence keeps its step.
struct WaitBytes {
    quint8 wait_status = 0;       // RPOW/RMDN/RBY/RBEZ/RVER, also SPOW
    quint8 wait_power = 0;        // never armed
    quint8 wait_io = 0;           // the seven I/O reads
    quint8 wait_osd_reset = 0;    // SOSDR
    quint8 wait_net_read = 0;     // RIPM, RLINK
    quint8 wait_net_set = 0;      // static address write
    quint8 wait_net_mode = 0;     // DHCP write and re-link
    quint8 wait_default = 0;      // SDEF
    quint8 wait_wall = 0;         // SMNC, SCO
    quint8 wait_fav = 0;          // RFAVE
    quint8 wait_image = 0;        // the sixteen picture reads
    quint8 wait_image_reset = 0;  // SIMRE, SPIRE
    quint8 wait_wall_default = 0; // SWDE
    quint8 wait_hotkey = 0;       // SHOT
    quint8 wait_bezel = 0;        // the eight bezel reads
    quint8 wait_bezel_set = 0;    // the eight bezel writes
    quint8 wait_posi = 0;         // the sixteen trim reads
};
