// A heated thing with a controller on it: a first-order process under proportional control, so that
// the values of a simulated controller move as real ones do. Values are tenths of a degree.
#pragma once

namespace pelvan::simulator {

class Process {
  public:
    /// Tenths of a degree, tenths of a degree at full output above ambient, milliseconds.
    Process(double ambient, double gain, double time_constant_ms)
        : ambient_(ambient), gain_(gain), time_constant_ms_(time_constant_ms), value_(ambient) {}

    /// Lets `elapsed_ms` pass under the given set point and proportional band. A long time costs no
    /// more than a short one.
    void advance(double elapsed_ms, double set_point, double band);

    [[nodiscard]] double value() const { return value_; }
    /// Percent, -100 (full cooling) to 100 (full heating).
    [[nodiscard]] double output() const { return output_; }

  private:
    double ambient_;
    double gain_;
    double time_constant_ms_;
    double value_;
    double output_ = 0;
};

} // namespace pelvan::simulator
