// The local time of the host.
#pragma once

#include "platform/Export.h"

/// Local time at the moment of construction. All fields are 0 when the host cannot tell it.
class VKCL_API ATime {
 public:
  ATime() noexcept;

  int year() const noexcept { return year_; }      ///< four digits
  int month() const noexcept { return month_; }    ///< 1 to 12
  int day() const noexcept { return day_; }        ///< 1 to 31
  int hour() const noexcept { return hour_; }      ///< 0 to 23
  int minute() const noexcept { return minute_; }  ///< 0 to 59
  int second() const noexcept { return second_; }  ///< 0 to 60

 private:
  int year_ = 0;
  int month_ = 0;
  int day_ = 0;
  int hour_ = 0;
  int minute_ = 0;
  int second_ = 0;
};
