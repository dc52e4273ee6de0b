// The pictures of a profile as plain values: the curve that is programmed, with what can be dragged
// in it, and a run with what was measured. Times are seconds; set points are in the controller's
// units. The functions are virtual for the library that draws them (see sheet.h).
#pragma once

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "platform/event.h"

namespace pelvan {

inline constexpr int kSetPoints = 2;
using SetPoints = std::array<double, kSetPoints>;
inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

/// A step's way, or what it has of one: a jump has none. A set point that is not programmed has no
/// value (not-a-number).
struct CurvePiece {
    double from_s = 0;
    double to_s = 0;
    SetPoints from{kNoValue, kNoValue};
    SetPoints to{kNoValue, kNoValue};
    int profile = 0;
    int step = 0; // 1 is the first
    int events = 0;
    /// What dragging the end of the piece can change.
    bool time_moves = false;
    std::array<bool, kSetPoints> value_moves{};
};

struct CurvePicture {
    std::vector<CurvePiece> pieces;
    std::array<std::string, kSetPoints> names; // with the unit
    /// What of the curve is not shown, as a sentence; empty when all is.
    std::string cut;
};

/// The programmed curve. A drag begins at a piece's end and is undone as one.
class CurveDesk {
  public:
    CurveDesk() = default;
    CurveDesk(const CurveDesk&) = delete;
    CurveDesk& operator=(const CurveDesk&) = delete;
    virtual ~CurveDesk() = default;

    [[nodiscard]] virtual const CurvePicture& picture() const = 0;
    /// The profile and step that are chosen; step 0 when none is.
    [[nodiscard]] virtual int chosen_profile() const = 0;
    [[nodiscard]] virtual int chosen_step() const = 0;
    virtual void choose_step(int step) = 0;

    virtual void begin_drag(std::size_t piece) = 0;
    /// The end of the piece that the drag began at goes to this time and, of that set point, to
    /// this value, as far as the step can follow and its limits allow.
    virtual void drag_to(int set_point, double time_s, double value) = 0;
    virtual void end_drag() = 0;

    Event<> changed;
    Event<> chosen_moved;
};

/// What was seen at one moment of a run; `seen` is false where the line was lost.
struct RunPoint {
    double time_s = 0;
    bool seen = false;
    SetPoints set_points{kNoValue, kNoValue};
    SetPoints process{kNoValue, kNoValue};
    int step = 0;
    int events = 0;
};

struct RunPicture {
    CurvePicture programmed;
    std::vector<RunPoint> points;
    double now_s = 0;
};

/// A run under way or over. Both functions that save raise file errors.
class RunDesk {
  public:
    RunDesk() = default;
    RunDesk(const RunDesk&) = delete;
    RunDesk& operator=(const RunDesk&) = delete;
    virtual ~RunDesk() = default;

    [[nodiscard]] virtual const RunPicture& picture() const = 0;

    Event<> changed;
};

} // namespace pelvan
