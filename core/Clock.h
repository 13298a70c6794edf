#pragma once
// "The present moment", injectable so tests can fix it.
#include "core/DateTime.h"

namespace kitra {

class Clock {
public:
    virtual ~Clock() = default;
    virtual DateTime Now() const = 0;
};

// Local wall-clock time.
class SystemClock final : public Clock {
public:
    DateTime Now() const override;
};

// Always answers the moment it was given; tests set it and move it.
class FixedClock final : public Clock {
public:
    explicit FixedClock(DateTime moment) : moment_(moment) {}
    DateTime Now() const override { return moment_; }
    void Set(DateTime moment) { moment_ = moment; }

private:
    DateTime moment_;
};

}  // namespace kitra
