#ifndef Pegasus_CIMDateTime_h
#define Pegasus_CIMDateTime_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

struct CIMDateTimeRep;
struct DateTimeFields;

// A CIM date-time: either a time stamp "yyyymmddhhmmss.mmmmmmsutc" (s is
// '+' or '-', utc the offset from UTC in minutes) or an interval
// "ddddddddhhmmss.mmmmmm:000". Trailing fields may be '*' (not significant).
// A default-constructed value is the zero interval.
class PEGASUS_COMMON_LINKAGE CIMDateTime
{
public:
    CIMDateTime();
    CIMDateTime(const String& str);
    CIMDateTime(const CIMDateTime& x);
    // Microseconds since 0000-01-01 00:00:00 (time stamp, at UTC) or the
    // length of an interval.
    CIMDateTime(Uint64 usec, Boolean isInterval);
    CIMDateTime(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
                Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset);
    CIMDateTime(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
                Uint32 numSignificantMicrosecondDigits);
    ~CIMDateTime();

    CIMDateTime& operator=(const CIMDateTime& x);

    String toString() const;
    // Throws InvalidDateTimeFormatException and leaves the value unchanged
    // when the text is not a valid date-time.
    void set(const String& str);
    // Same checks as the constructors taking these fields.
    void setTimeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
                      Uint32 seconds, Uint32 microseconds, Uint32 numSignificantMicrosecondDigits,
                      Sint32 utcOffset);
    void setInterval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                     Uint32 microseconds, Uint32 numSignificantMicrosecondDigits);
    void clear();

    static CIMDateTime getCurrentDateTime();
    // finishTime - startTime in microseconds; both must be time stamps.
    static Sint64 getDifference(CIMDateTime startTime, CIMDateTime finishTime);

    Boolean isInterval() const;
    Boolean isInterval();
    Boolean isTimeStamp() const;
    Boolean equal(const CIMDateTime& x) const;
    // Time stamps: microseconds since 0000-01-01 00:00:00 UTC.
    Uint64 toMicroSeconds() const;
    void setUtcOffSet(Sint32 utc);

    CIMDateTime operator+(const CIMDateTime& x) const;
    CIMDateTime& operator+=(const CIMDateTime& x);
    CIMDateTime operator-(const CIMDateTime& x) const;
    CIMDateTime& operator-=(const CIMDateTime& x);
    // Intervals only (TypeMismatchException otherwise); dividing by zero
    // throws Exception.
    CIMDateTime operator*(Uint64 x) const;
    CIMDateTime& operator*=(Uint64 x);
    CIMDateTime operator/(Uint64 num) const;
    CIMDateTime& operator/=(Uint64 num);
    Uint64 operator/(const CIMDateTime& cdt) const;
    Boolean operator<(const CIMDateTime& x) const;
    Boolean operator<=(const CIMDateTime& x) const;
    Boolean operator>(const CIMDateTime& x) const;
    Boolean operator>=(const CIMDateTime& x) const;
    Boolean operator!=(const CIMDateTime& x) const;

private:
    explicit CIMDateTime(const DateTimeFields& fields);
    // Gives this value these fields, in place when no copy shares them.
    void _replace(const DateTimeFields& fields);

    // Copies share it (counted); never null.
    CIMDateTimeRep* _rep;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMDateTime& x, const CIMDateTime& y);

PEGASUS_NAMESPACE_END

#endif
