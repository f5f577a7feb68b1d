#pragma once

#include "services/windowservices.h"

#include <QString>
#include <functional>

// Five favourite slots kept in the controllers: "SFAVE n" stores the current wall
// settings, "RFAVE n" recalls them. Both always go to every listed controller, so a
// favourite covers the whole wall.
class Favourites {
public:
    // readBack shows the recalled bypass, bezel mode and bezel values.
    Favourites(WindowServices& session, std::function<void()> readBack);

    void btn_save_Click(int index);
    void btn_recall_Click(int index);
    // The recall's acknowledgement, "RFAV" and the slot.
    void HandleRecallReply(const QString& reply);

private:
    WindowServices& s_;
    std::function<void()> readBack_;
    WaitStep recall_{"Recall"};
};
