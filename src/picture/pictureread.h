#pragma once

#include <QString>

class Session;

// Reads the picture grid back from the selected controller and runs the page's reset
// buttons: one per parameter row, "Picture Reset" of all four, and "Refresh".
class PictureRead {
public:
    explicit PictureRead(Session& session);
    void ReadPicture();
    void HandlePictureReply(const QString& reply);
    void HandlePictureResetReply(const QString& reply);
    void btn_img_rst_Click(int index);

private:
    // Shows the default 50 in every list of the row, raising each list's Click.
    void showDefault(int parameter);
    // Sends a reset to the chosen controllers and waits for its acknowledgement.
    void reset(bool all, const QByteArray& line);

    Session& s_;
};
