#pragma once

#include "services/windowservices.h"

#include <QString>

// Reads the picture grid back from the selected controller and runs the page's reset
// buttons: one per parameter row, "Picture Reset" of all four, and "Refresh".
class PictureRead {
public:
    explicit PictureRead(WindowServices& session);
    void ReadPicture();
    void HandlePictureReply(const QString& reply);
    void HandlePictureResetReply(const QString& reply);
    void btn_img_rst_Click(int index);
    // The grid is being read or reset: its lists are set by code, not by the operator.
    bool busy() const { return !read_.idle() || !reset_.idle(); }

private:
    // Shows the factory value in every list of the row, raising each list's Click.
    void showDefault(int parameter);
    // Sends a reset to the chosen controllers and waits for its acknowledgement; the
    // rows show their defaults once it is armed.
    void reset(bool all, const QByteArray& line, int firstRow, int rows);

    WindowServices& s_;
    WaitStep read_{"Picture read"};
    WaitStep reset_{"Picture reset"};
};
