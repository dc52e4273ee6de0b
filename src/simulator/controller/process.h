// A heated thing with a controller on it: a first-order process under proportional control, so that
// the values of a simulated controller move as real ones do. Values are tenths of a degree.
#pragma once

namespace pelvan::simulator {

/// What is heated.
struct Plant {
    double gain;             // tenths of a degree above ambient at full output
    double time_constant_ms; // how fast it gets there
};

class Process {
  public:
    /// The length of a tick. A coarse one, because days may have to pass at once.
    static constexpr double kTickMs = 250;

    /// Tenths of a degree.
    Process(double ambient, const Plant& plant) : ambient_(ambient), value_(ambient) {
        set_plant(plant);
    }

    /// The value stays and goes on from where it is.
    void set_plant(const Plant& plant);
    /// Lets a tick pass under the given set point and proportional band; returns whether the value
    /// still moved.
    bool tick(double set_point, double band);
    /// Lets a tick pass without output.
    bool coast();

    [[nodiscard]] double value() const { return value_; }
    /// Percent, -100 (full cooling) to 100 (full heating).
    [[nodiscard]] double output() const { return output_; }

  private:
    bool move();

    double ambient_;
    double gain_ = 0;
    double share_ = 0; // of the way to its target that the value goes in a tick
    double value_;
    double output_ = 0;
};

} // namespace pelvan::simulator
