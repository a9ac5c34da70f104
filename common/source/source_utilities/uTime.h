// Local time with a strftime-based formatter that adds a sub-second field.
// The time fields are shared by every uTime of the process: GetLocal on any
// object sets the time that all of them report.
#ifndef MORA_LUX_UTIME_H
#define MORA_LUX_UTIME_H

#include <cstdint>
#include <ctime>

namespace MORA_LUX {

class uTime
{
public:
    uTime();
    uTime(const uTime&);
    uTime& operator=(const uTime&);
    virtual ~uTime();

    /// Reads the clock into the shared fields. When the local-time conversion
    /// fails the calendar fields keep their old values.
    static uTime GetLocal();

    int GetYear() const;
    /// 0 for January.
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    int GetMilliSecond() const;

    /// strftime with "%s" (three-digit sub-second field) and "%#s". Writes
    /// "Invalid time" before the first GetLocal; null when the time is
    /// unusable or size < 1; a null buffer is returned as it is.
    char* FormatTime(char* buffer, int size, const char* format) const;
    /// Fills `out` from the shared fields (month field one below the stored month).
    void ConvertTime(tm* out);
    /// Day of the year from the cumulative-days tables; 0 when invalid or in January.
    int CalculateYDays();

    /// -1 when `start` is beyond the text or `part` isn't found.
    static int FindSubString(const char* text, const char* part, int start);
    /// Replaces every `from` by `to` in place (`text` holds size + 1 bytes); 0
    /// (text unchanged) when nothing matches or the result would be longer
    /// than `size`; else the count replaced.
    static int ReplaceString(char* text, int size, const char* from, const char* to);

    // The fields are shared, so these compare the shared hour with the shared day.
    bool operator==(const uTime& other) const;
    bool operator<(const uTime& other) const;
    bool operator>(const uTime& other) const;
    bool operator<=(const uTime& other) const;
    bool operator>=(const uTime& other) const;
    bool operator!=(const uTime& other) const;

private:
    static int m_year;
    static int m_month;
    static int m_day;
    static int m_hour;
    static int m_minute;
    static int m_second;
    static int m_weekDay;
    static int m_yearDay;
    static int m_milliSecond;
    static int32_t m_status;
};

} // namespace MORA_LUX

#endif
