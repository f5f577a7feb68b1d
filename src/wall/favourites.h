#pragma once

#include <QString>

class Session;

// Five favourite slots kept in the controllers: "SFAVE n" stores the current wall
// settings, "RFAVE n" recalls them. Both always go to every listed controller, so a
// favourite covers the whole wall.
class Favourites {
public:
    explicit Favourites(Session& session);

    void btn_save_Click(int index);
    void btn_recall_Click(int index);

private:
    Session& s_;
};
