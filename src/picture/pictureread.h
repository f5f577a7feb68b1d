#pragma once

#include <QString>

class Session;

class PictureRead {
public:
    explicit PictureRead(Session& session);
    void ReadPicture();
    void HandlePictureReply(const QString& reply);
    void HandlePictureResetReply(const QString& reply);

private:
    Session& s_;
};
