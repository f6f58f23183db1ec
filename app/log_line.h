// The lines of the log pane: "[time stamp] [page tag] text". A page emits them through its signal addLog(QString) and
// never touches the pane.
#pragma once

#include "app/device_context.h"

#include <QObject>
#include <QString>

#include <cstdint>

constexpr int kSaveTimeSize = 127;

/// The only storage of the time stamp, rewritten by each call of logTime().
extern char saveTime[kSaveTimeSize];

/// The present time as "2026/11/15 123456-789", in UTC+8 whatever the system's time zone. The text stands in saveTime:
/// use it before the next call. The date follows this log format's own calendar walk (see writeLogTime).
const char *logTime();

/// Formats the moment `seconds` + `microseconds` after 1970-01-01 UTC into saveTime. The date is often off by one
/// or two days from the calendar (1 January is 01/00, 1 February 02/03, 31 May 06/00): logs are compared line by line
/// with those of other tools that count the same way, so the walk stays as it is.
void writeLogTime(std::int64_t seconds, std::int64_t microseconds);

/// "[%s] [%s] " and 42 hyphens: the first line of an action.
QString separatorLine(const char *tag);

/// The guard line of an action that needs a device while none is open.
QString deviceNotOpenLine(const char *tag);

/// True when a device is open. If not, posts the guard line through the page.
template <typename Page>
bool deviceIsOpen(Page &page, const DeviceContext &device, const char *tag)
{
    if (device.handle != 0)
        return true;
    emit page.addLog(deviceNotOpenLine(tag));
    return false;
}

/// How most actions begin: posts the separator line, then checks the device as deviceIsOpen() does.
template <typename Page>
bool beginAction(Page &page, const DeviceContext &device, const char *tag)
{
    emit page.addLog(separatorLine(tag));
    return deviceIsOpen(page, device, tag);
}
