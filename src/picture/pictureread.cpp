#include "picture/pictureread.h"

#include "window/session.h"

PictureRead::PictureRead(Session& session) : s_(session) {}

void PictureRead::ReadPicture()
{
}

void PictureRead::HandlePictureReply(const QString& reply)
{
    Q_UNUSED(reply);
}

void PictureRead::HandlePictureResetReply(const QString& reply)
{
    Q_UNUSED(reply);
}
