#pragma once

// The bearer token every remote-control request carries: SELVANE_CONTROL_TOKEN when it is set,
// else the one kept in the config folder (made at the first start, readable by the owner only).
// Plain functions, GUI thread (they touch the disk once, at start-up).

#include <QByteArray>
#include <QString>

namespace selvane::control {

struct Token
{
    QByteArray value;
    QString file; // where it is kept; empty when it comes from the environment
};

// The file: selvane_control_token beside the settings (~/.config/Ostrel/).
QString tokenFilePath();

// False with the reason when no token can be had (the variable too short, the file unwritable).
bool loadToken(Token *token, QString *error);

} // namespace selvane::control
