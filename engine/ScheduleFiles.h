#pragma once

// The schedule file: read (an empty arrangement and `error` set when it is not one), written,
// and checked (the first failure's message and its box title). Pure functions; any thread.

#include "schedule/ProgramArrangement.h"

#include <QByteArray>
#include <QString>

namespace selvane {

class ScheduleFiles
{
public:
    static ProgramArrangement read(const QByteArray &json, QString *error);
    static QByteArray write(const ProgramArrangement &arrangement);
    static arrangement::Validation check(const ProgramArrangement &arrangement);
};

} // namespace selvane
