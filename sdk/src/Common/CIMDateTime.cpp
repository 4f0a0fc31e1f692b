#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/time.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

const Uint64 USEC_PER_SEC = 1000000ULL;
const Uint64 USEC_PER_MIN = 60 * USEC_PER_SEC;
const Uint64 USEC_PER_HOUR = 60 * USEC_PER_MIN;
const Uint64 USEC_PER_DAY = 24 * USEC_PER_HOUR;
const Uint32 MAX_INTERVAL_DAYS = 99999999;
// Index of the '.' and of the offset sign in the text form.
const Uint32 DOT = 14;
const Uint32 SIGN = 21;
const Uint32 TEXT_LENGTH = 25;

Boolean _isLeap(Uint32 year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

Uint32 _daysInMonth(Uint32 year, Uint32 month)
{
    static const Uint32 days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && _isLeap(year) ? 29 : days[month - 1];
}

// Days from 0000-01-01 to the given date of the proleptic Gregorian
// calendar.
Uint64 _daysFromCivil(Uint32 year, Uint32 month, Uint32 day)
{
    Uint64 days = Uint64(year) * 365 + (year + 3) / 4 - (year + 99) / 100 + (year + 399) / 400;
    for (Uint32 m = 1; m < month; m++)
    {
        days += _daysInMonth(year, m);
    }
    return days + day - 1;
}

void _civilFromDays(Uint64 days, Uint32& year, Uint32& month, Uint32& day)
{
    // 146097 days per 400 years; walk down from there.
    Uint64 cycles = days / 146097;
    days %= 146097;
    year = Uint32(cycles * 400);
    for (;;)
    {
        Uint32 length = _isLeap(year) ? 366 : 365;
        if (days < length)
        {
            break;
        }
        days -= length;
        year++;
    }
    month = 1;
    while (days >= _daysInMonth(year, month))
    {
        days -= _daysInMonth(year, month);
        month++;
    }
    day = Uint32(days) + 1;
}

// Reads the digits [begin, end) of text; false when any is not a digit.
Boolean _number(const char* text, Uint32 begin, Uint32 end, Uint32& value)
{
    value = 0;
    for (Uint32 i = begin; i < end; i++)
    {
        if (text[i] < '0' || text[i] > '9')
        {
            return false;
        }
        value = value * 10 + Uint32(text[i] - '0');
    }
    return true;
}

// Whether every character of [begin, end) is '*'.
Boolean _allStars(const char* text, Uint32 begin, Uint32 end)
{
    for (Uint32 i = begin; i < end; i++)
    {
        if (text[i] != '*')
        {
            return false;
        }
    }
    return true;
}

} // namespace

// What a date-time is.
struct DateTimeFields
{
    char text[TEXT_LENGTH + 1];
    Boolean interval;
    // Date and time as written (wildcards read as zero) in microseconds
    // since 0000-01-01, or the interval's length.
    Uint64 localUsec;
    // Minutes east of UTC.
    Sint32 utcOffset;

    DateTimeFields()
    {
        strcpy(text, "00000000000000.000000:000");
        interval = true;
        localUsec = 0;
        utcOffset = 0;
    }

    Uint64 utcUsec() const
    {
        return interval ? localUsec : Uint64(Sint64(localUsec) - Sint64(utcOffset) * 60000000LL);
    }

    // Fills this rep from the text; false when the text is not valid.
    Boolean parse(const String& str)
    {
        if (str.size() != TEXT_LENGTH)
        {
            return false;
        }
        char t[TEXT_LENGTH + 1];
        for (Uint32 i = 0; i < TEXT_LENGTH; i++)
        {
            Uint16 c = str[i];
            if (c > 0x7F)
            {
                return false;
            }
            t[i] = char(c);
        }
        t[TEXT_LENGTH] = 0;
        if (t[DOT] != '.' || (t[SIGN] != '+' && t[SIGN] != '-' && t[SIGN] != ':'))
        {
            return false;
        }
        Boolean isInterval = t[SIGN] == ':';

        // Fields as [begin, end); a wildcard may start at any field boundary
        // or within the microseconds, and then runs to the end of them.
        static const Uint32 stampFields[][2] = {{0, 4},   {4, 6},   {6, 8},  {8, 10},
                                                {10, 12}, {12, 14}, {15, 21}};
        static const Uint32 intervalFields[][2] = {{0, 8}, {8, 10}, {10, 12}, {12, 14}, {15, 21}};
        const Uint32(*fields)[2] = isInterval ? intervalFields : stampFields;
        Uint32 fieldCount = isInterval ? 5 : 7;
        Uint32 values[7] = {0, 0, 0, 0, 0, 0, 0};
        Boolean starred = false;
        for (Uint32 f = 0; f < fieldCount; f++)
        {
            Uint32 begin = fields[f][0];
            Uint32 end = fields[f][1];
            if (starred)
            {
                if (!_allStars(t, begin, end))
                {
                    return false;
                }
                continue;
            }
            Uint32 digitsEnd = begin;
            while (digitsEnd < end && t[digitsEnd] != '*')
            {
                digitsEnd++;
            }
            Boolean partial = digitsEnd != begin && digitsEnd != end;
            if (partial && f != fieldCount - 1)
            {
                return false;
            }
            if (!_allStars(t, digitsEnd, end) || !_number(t, begin, digitsEnd, values[f]))
            {
                return false;
            }
            if (digitsEnd != end)
            {
                starred = true;
                // Wildcards count as zero digits of the microseconds.
                for (Uint32 i = digitsEnd; i < end; i++)
                {
                    values[f] *= 10;
                }
            }
        }

        Uint32 offset;
        if (!_number(t, SIGN + 1, TEXT_LENGTH, offset))
        {
            return false;
        }
        Uint64 usec;
        if (isInterval)
        {
            if (offset != 0 || values[1] > 23 || values[2] > 59 || values[3] > 59)
            {
                return false;
            }
            usec = values[0] * USEC_PER_DAY + values[1] * USEC_PER_HOUR + values[2] * USEC_PER_MIN +
                   values[3] * USEC_PER_SEC + values[4];
        }
        else
        {
            Boolean monthKnown = t[4] != '*';
            Boolean dayKnown = t[6] != '*';
            if ((monthKnown && (values[1] < 1 || values[1] > 12)) ||
                (dayKnown && (values[2] < 1 || values[2] > 31)) || values[3] > 23 ||
                values[4] > 59 || values[5] > 59)
            {
                return false;
            }
            if (monthKnown && dayKnown && values[2] > _daysInMonth(values[0], values[1]))
            {
                return false;
            }
            Uint32 month = monthKnown ? values[1] : 1;
            Uint32 day = dayKnown ? values[2] : 1;
            usec = _daysFromCivil(values[0], month, day) * USEC_PER_DAY +
                   values[3] * USEC_PER_HOUR + values[4] * USEC_PER_MIN + values[5] * USEC_PER_SEC +
                   values[6];
        }
        memcpy(text, t, sizeof(text));
        interval = isInterval;
        localUsec = usec;
        utcOffset = isInterval ? 0 : (t[SIGN] == '-' ? -Sint32(offset) : Sint32(offset));
        return true;
    }
};

// Shared by copies, which is what makes a copy (a value read out of an
// instance, say) cheap; changed in place only while one handle holds it.
struct CIMDateTimeRep
{
    std::atomic<Uint32> refs{1};
    DateTimeFields f;
};

namespace
{

void _unref(CIMDateTimeRep* rep)
{
    if (rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        delete rep;
    }
}

} // namespace

namespace
{

// The text of an interval or of a local time stamp with the given offset,
// with the last (6 - significant) microsecond digits as wildcards.
String _format(Boolean interval, Uint64 usec, Sint32 utcOffset, Uint32 significant)
{
    char buffer[64];
    Uint32 micro = Uint32(usec % USEC_PER_SEC);
    Uint64 secs = usec / USEC_PER_SEC;
    Uint32 seconds = Uint32(secs % 60);
    Uint32 minutes = Uint32(secs / 60 % 60);
    Uint32 hours = Uint32(secs / 3600 % 24);
    Uint64 days = secs / 86400;
    if (interval)
    {
        if (days > MAX_INTERVAL_DAYS)
        {
            throw DateTimeOutOfRangeException(String("interval too long"));
        }
        snprintf(buffer, sizeof(buffer), "%08llu%02u%02u%02u.%06u:000", days, hours, minutes,
                 seconds, micro);
    }
    else
    {
        Uint32 year, month, day;
        _civilFromDays(days, year, month, day);
        if (year > 9999 || utcOffset < -999 || utcOffset > 999)
        {
            throw DateTimeOutOfRangeException(String("time stamp out of range"));
        }
        snprintf(buffer, sizeof(buffer), "%04u%02u%02u%02u%02u%02u.%06u%c%03d", year, month, day,
                 hours, minutes, seconds, micro, utcOffset < 0 ? '-' : '+',
                 utcOffset < 0 ? -utcOffset : utcOffset);
    }
    for (Uint32 i = 15 + significant; i < SIGN; i++)
    {
        buffer[i] = '*';
    }
    return String(buffer);
}

} // namespace

namespace
{

// The fields a text stands for; throws when it is not a date-time.
DateTimeFields _parsed(const String& str)
{
    DateTimeFields fields;
    if (!fields.parse(str))
    {
        throw InvalidDateTimeFormatException();
    }
    return fields;
}

DateTimeFields _timeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
                          Uint32 seconds, Uint32 microseconds,
                          Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
{
    if (year > 9999 || month < 1 || month > 12 || day < 1 || day > _daysInMonth(year, month) ||
        hours > 23 || minutes > 59 || seconds > 59 || microseconds > 999999 ||
        numSignificantMicrosecondDigits > 6 || utcOffset < -999 || utcOffset > 999)
    {
        throw DateTimeOutOfRangeException(String("time stamp field out of range"));
    }
    Uint64 usec = _daysFromCivil(year, month, day) * USEC_PER_DAY + hours * USEC_PER_HOUR +
                  minutes * USEC_PER_MIN + seconds * USEC_PER_SEC + microseconds;
    return _parsed(_format(false, usec, utcOffset, numSignificantMicrosecondDigits));
}

DateTimeFields _interval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                         Uint32 microseconds, Uint32 numSignificantMicrosecondDigits)
{
    if (days > MAX_INTERVAL_DAYS || hours > 23 || minutes > 59 || seconds > 59 ||
        microseconds > 999999 || numSignificantMicrosecondDigits > 6)
    {
        throw DateTimeOutOfRangeException(String("interval field out of range"));
    }
    Uint64 usec = days * USEC_PER_DAY + hours * USEC_PER_HOUR + minutes * USEC_PER_MIN +
                  seconds * USEC_PER_SEC + microseconds;
    return _parsed(_format(true, usec, 0, numSignificantMicrosecondDigits));
}

} // namespace

// Every checking constructor settles the fields before anything is
// allocated, so a refusal leaves nothing behind.
CIMDateTime::CIMDateTime(const DateTimeFields& fields) : _rep(new CIMDateTimeRep)
{
    _rep->f = fields;
}

CIMDateTime::CIMDateTime() : CIMDateTime(DateTimeFields()) {}

CIMDateTime::CIMDateTime(const String& str) : CIMDateTime(_parsed(str)) {}

CIMDateTime::CIMDateTime(const CIMDateTime& x) : _rep(x._rep)
{
    _rep->refs.fetch_add(1, std::memory_order_relaxed);
}

CIMDateTime::CIMDateTime(Uint64 usec, Boolean isInterval)
    : CIMDateTime(_parsed(_format(isInterval, usec, 0, 6)))
{
}

CIMDateTime::CIMDateTime(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
                         Uint32 seconds, Uint32 microseconds,
                         Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
    : CIMDateTime(_timeStamp(year, month, day, hours, minutes, seconds, microseconds,
                             numSignificantMicrosecondDigits, utcOffset))
{
}

CIMDateTime::CIMDateTime(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                         Uint32 microseconds, Uint32 numSignificantMicrosecondDigits)
    : CIMDateTime(_interval(days, hours, minutes, seconds, microseconds,
                            numSignificantMicrosecondDigits))
{
}

CIMDateTime::~CIMDateTime()
{
    _unref(_rep);
}

CIMDateTime& CIMDateTime::operator=(const CIMDateTime& x)
{
    if (_rep != x._rep)
    {
        x._rep->refs.fetch_add(1, std::memory_order_relaxed);
        _unref(_rep);
        _rep = x._rep;
    }
    return *this;
}

void CIMDateTime::_replace(const DateTimeFields& fields)
{
    if (_rep->refs.load(std::memory_order_acquire) == 1)
    {
        _rep->f = fields;
        return;
    }
    CIMDateTimeRep* mine = new CIMDateTimeRep;
    mine->f = fields;
    _unref(_rep);
    _rep = mine;
}

String CIMDateTime::toString() const
{
    return String(_rep->f.text);
}

void CIMDateTime::set(const String& str)
{
    _replace(_parsed(str));
}

void CIMDateTime::clear()
{
    _replace(DateTimeFields());
}

CIMDateTime CIMDateTime::getCurrentDateTime()
{
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    time_t secs = tv.tv_sec;
    struct tm local;
    localtime_r(&secs, &local);
    Sint32 offset = Sint32(local.tm_gmtoff / 60);
    return CIMDateTime(Uint32(local.tm_year + 1900), Uint32(local.tm_mon + 1),
                       Uint32(local.tm_mday), Uint32(local.tm_hour), Uint32(local.tm_min),
                       Uint32(local.tm_sec > 59 ? 59 : local.tm_sec), Uint32(tv.tv_usec), 6,
                       offset);
}

Sint64 CIMDateTime::getDifference(CIMDateTime startTime, CIMDateTime finishTime)
{
    if (startTime.isInterval() || finishTime.isInterval())
    {
        throw InvalidDateTimeFormatException();
    }
    return Sint64(finishTime.toMicroSeconds()) - Sint64(startTime.toMicroSeconds());
}

Boolean CIMDateTime::isInterval() const
{
    return _rep->f.interval;
}

Boolean CIMDateTime::isInterval()
{
    return _rep->f.interval;
}

Boolean CIMDateTime::isTimeStamp() const
{
    return !_rep->f.interval;
}

Boolean CIMDateTime::equal(const CIMDateTime& x) const
{
    return _rep->f.interval == x._rep->f.interval && toMicroSeconds() == x.toMicroSeconds();
}

Uint64 CIMDateTime::toMicroSeconds() const
{
    return _rep->f.utcUsec();
}

void CIMDateTime::setUtcOffSet(Sint32 utc)
{
    if (_rep->f.interval)
    {
        throw InvalidDateTimeFormatException();
    }
    if (utc < -999 || utc > 999)
    {
        throw DateTimeOutOfRangeException(String("UTC offset out of range"));
    }
    char tail[8];
    snprintf(tail, sizeof(tail), "%c%03d", utc < 0 ? '-' : '+', utc < 0 ? -utc : utc);
    DateTimeFields fields = _rep->f;
    memcpy(fields.text + SIGN, tail, 4);
    fields.utcOffset = utc;
    _replace(fields);
}

CIMDateTime CIMDateTime::operator+(const CIMDateTime& x) const
{
    if (!x.isInterval())
    {
        throw TypeMismatchException();
    }
    if (isInterval())
    {
        return CIMDateTime(_rep->f.localUsec + x._rep->f.localUsec, true);
    }
    CIMDateTime result;
    result.set(_format(false, _rep->f.localUsec + x._rep->f.localUsec, _rep->f.utcOffset, 6));
    return result;
}

CIMDateTime& CIMDateTime::operator+=(const CIMDateTime& x)
{
    return *this = *this + x;
}

CIMDateTime CIMDateTime::operator-(const CIMDateTime& x) const
{
    if (isInterval() && !x.isInterval())
    {
        throw TypeMismatchException();
    }
    if (isInterval() || !x.isInterval())
    {
        // interval - interval, or the interval between two time stamps
        Uint64 a = toMicroSeconds();
        Uint64 b = x.toMicroSeconds();
        if (b > a)
        {
            throw DateTimeOutOfRangeException(String("negative interval"));
        }
        return CIMDateTime(a - b, true);
    }
    if (x._rep->f.localUsec > _rep->f.localUsec)
    {
        throw DateTimeOutOfRangeException(String("time stamp before year 0"));
    }
    CIMDateTime result;
    result.set(_format(false, _rep->f.localUsec - x._rep->f.localUsec, _rep->f.utcOffset, 6));
    return result;
}

CIMDateTime& CIMDateTime::operator-=(const CIMDateTime& x)
{
    return *this = *this - x;
}

CIMDateTime CIMDateTime::operator*(Uint64 x) const
{
    if (!isInterval())
    {
        throw TypeMismatchException();
    }
    Uint64 usec = toMicroSeconds();
    if (x != 0 && usec > UINT64_MAX / x)
    {
        throw DateTimeOutOfRangeException(String("interval too long"));
    }
    return CIMDateTime(usec * x, true);
}

CIMDateTime& CIMDateTime::operator*=(Uint64 x)
{
    return *this = *this * x;
}

CIMDateTime CIMDateTime::operator/(Uint64 num) const
{
    if (!isInterval())
    {
        throw TypeMismatchException();
    }
    if (num == 0)
    {
        throw Exception(String("CIMDateTime division by zero"));
    }
    return CIMDateTime(toMicroSeconds() / num, true);
}

CIMDateTime& CIMDateTime::operator/=(Uint64 num)
{
    return *this = *this / num;
}

Uint64 CIMDateTime::operator/(const CIMDateTime& cdt) const
{
    if (!isInterval() || !cdt.isInterval())
    {
        throw TypeMismatchException();
    }
    Uint64 divisor = cdt.toMicroSeconds();
    if (divisor == 0)
    {
        throw Exception(String("CIMDateTime division by zero"));
    }
    return toMicroSeconds() / divisor;
}

void CIMDateTime::setTimeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours,
                               Uint32 minutes, Uint32 seconds, Uint32 microseconds,
                               Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
{
    _replace(_timeStamp(year, month, day, hours, minutes, seconds, microseconds,
                        numSignificantMicrosecondDigits, utcOffset));
}

void CIMDateTime::setInterval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                              Uint32 microseconds, Uint32 numSignificantMicrosecondDigits)
{
    _replace(_interval(days, hours, minutes, seconds, microseconds,
                       numSignificantMicrosecondDigits));
}

namespace
{

void _checkComparable(const CIMDateTime& x, const CIMDateTime& y)
{
    if (x.isInterval() != y.isInterval())
    {
        throw TypeMismatchException();
    }
}

} // namespace

Boolean CIMDateTime::operator<(const CIMDateTime& x) const
{
    _checkComparable(*this, x);
    return toMicroSeconds() < x.toMicroSeconds();
}

Boolean CIMDateTime::operator<=(const CIMDateTime& x) const
{
    _checkComparable(*this, x);
    return toMicroSeconds() <= x.toMicroSeconds();
}

Boolean CIMDateTime::operator>(const CIMDateTime& x) const
{
    _checkComparable(*this, x);
    return toMicroSeconds() > x.toMicroSeconds();
}

Boolean CIMDateTime::operator>=(const CIMDateTime& x) const
{
    _checkComparable(*this, x);
    return toMicroSeconds() >= x.toMicroSeconds();
}

Boolean CIMDateTime::operator!=(const CIMDateTime& x) const
{
    return !equal(x);
}

Boolean operator==(const CIMDateTime& x, const CIMDateTime& y)
{
    return x.equal(y);
}

PEGASUS_NAMESPACE_END
