#pragma once

#include "services/windowservices.h"

#include <QString>

// Sixteen edge trims, four per output: horizontal start, horizontal end, vertical start
// and vertical end. A bar's position p (0..510) is the trim p - 255; the sign travels
// in the command's keyword ("SM..." minus, "SP..." plus), the magnitude as the number.
class PositionTrim {
public:
    explicit PositionTrim(WindowServices& session);

    void ReadPositionTrim();
    void HandleTrimReply(const QString& reply);

    void HS_A_Change(int index);
    void HS_A_Scroll(int index);
    void typeTrim(int index);
    void btn_posi_Click(int index);

private:
    void showTrim(int index, int position);

    WindowServices& s_;
    WaitStep read_{"Trim read"};
};
