#include "engine/ScheduleFiles.h"

namespace selvane {

ProgramArrangement ScheduleFiles::read(const QByteArray &json, QString *error)
{
    return arrangement::fromJson(json, error);
}

QByteArray ScheduleFiles::write(const ProgramArrangement &arrangement)
{
    return arrangement::toJson(arrangement);
}

arrangement::Validation ScheduleFiles::check(const ProgramArrangement &arrangement)
{
    return arrangement::validate(arrangement);
}

} // namespace selvane
