// The two tables of scales, their base, and the steps taken along them.
#include "zoom/scale_steps.h"

#include "platform/export.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace prism {

int ZoomBase = 10;
int ZoomInSteps[kStepTableWords] = {5, 10, 20, 40, 60, 80};
int ZoomOutSteps[kStepTableWords] = {5, 10, 15, 30, 40, 50};

namespace {

// The tables only ever hold what BZoomSetScaleSteps accepted, a count of
// 1..10; the bound here keeps a reader inside the 11 words regardless.
int CountOf(const int* table) {
    const int n = table[0];
    return n < 1 ? 1 : n > kStepTableWords - 1 ? kStepTableWords - 1 : n;
}

int LastOf(const int* table) { return table[CountOf(table)]; }

int Clamp32(std::int64_t v) {
    if (v > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (v < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    return static_cast<int>(v);
}

bool TableAcceptable(const int* table, int base) {
    const int n = table[0];
    if (n < 1 || n > kStepTableWords - 1 || table[1] != base) return false;
    for (int i = 2; i <= n; ++i)
        if (table[i] <= table[i - 1]) return false;
    return true;
}

// One table or fine step on (num, den) for the modes 18..21 (34..37 alike).
void StepFraction(int action, int* num, int* den) {
    const int b = ZoomBase;
    switch (action) {
        case 2:  // one table step larger
            NormaliseScale(num, den);
            if (*den == b)
                *num = NextStep(*num, ZoomInSteps);
            else if (*num == b)
                *den = PreviousStep(*den, ZoomOutSteps);
            break;
        case 3:  // one table step smaller
            NormaliseScale(num, den);
            if (*num == b)
                *den = NextStep(*den, ZoomOutSteps);
            else if (*den == b)
                *num = PreviousStep(*num, ZoomInSteps);
            break;
        case 4:  // one fine step larger
            if (*den != b)
                *den = FineDown(*den, b);
            else
                *num = FineUp(*num, LastOf(ZoomInSteps));
            break;
        case 5:  // one fine step smaller
            if (*num == b)
                *den = FineUp(*den, LastOf(ZoomOutSteps));
            else if (*den == b)
                *num = FineDown(*num, b);
            break;
        default:  // keep the start scale
            break;
    }
}

}  // namespace

int NextStep(int v, const int* table) {
    const int n = CountOf(table);
    for (int i = 1; i <= n; ++i)
        if (table[i] >= v) return table[i] == v && i < n ? table[i + 1] : table[i];
    return table[n];
}

int PreviousStep(int v, const int* table) {
    const int n = CountOf(table);
    for (int i = n; i >= 1; --i)
        if (table[i] <= v) return table[i] == v && i > 1 ? table[i - 1] : table[i];
    return table[1];
}

int FineStep(int v) {
    if (v < 10) return 1;
    if (v < 30) return 2;
    return static_cast<int>(std::int64_t{5} * v / 100);
}

// Either may pass its limit by a little; the next step corrects it.
int FineUp(int v, int limit) { return limit <= v ? limit : Clamp32(std::int64_t{v} + FineStep(v)); }

int FineDown(int v, int limit) { return v <= limit ? limit : Clamp32(std::int64_t{v} - FineStep(v)); }

void NormaliseScale(int* num, int* den) {
    const int b = ZoomBase;
    if (*num == b || *den == b) return;
    if (*num == 0 || *den == 0) {
        *num = *den = b;
    } else if (*den >= *num) {
        *den = Clamp32(std::int64_t{b} * *den / *num);
        *num = b;
    } else {
        *num = Clamp32(std::int64_t{b} * *num / *den);
        *den = b;
    }
}

void StepScale(BZoomState* state) {
    std::memcpy(&state->scaleNumX, state->startScale, sizeof(state->startScale));
    const int mode = state->mode;
    // 17..21 step with the mouse, 33..37 without; 22..32 keep the start
    // scale with its own Y values.
    int action;
    if (mode >= 17 && mode <= 21)
        action = mode - 16;
    else if (mode >= 33 && mode <= 37)
        action = mode - 32;
    else
        return;
    int num = state->scaleNumX, den = state->scaleDenX;
    StepFraction(action, &num, &den);
    state->scaleNumX = state->scaleNumY = num;
    state->scaleDenX = state->scaleDenY = den;
}

void RatioToScale(double f, int* scale) {
    const double b = ZoomBase;
    const double lowest = b / LastOf(ZoomOutSteps), highest = LastOf(ZoomInSteps) / b;
    // A band of no size in a client area of no size gives 0 / 0: taken as
    // the largest scale, like any other band of no size.
    if (std::isnan(f) || f > highest) f = highest;
    if (f < lowest) f = lowest;
    int num = ZoomBase, den = ZoomBase;
    if (f >= 1.0)
        num = TruncateToInt(b * f + 0.5);
    else
        den = TruncateToInt(b / f + 0.5);
    scale[0] = scale[2] = num;
    scale[1] = scale[3] = den;
}

void OrderRect(RECT* r) {
    if (r->left > r->right) std::swap(r->left, r->right);
    if (r->top > r->bottom) std::swap(r->top, r->bottom);
}

bool BandIsLargeEnough(POINT p, const RECT& band) {
    return std::llabs(std::int64_t{p.x} - band.left) >= 6 && std::llabs(std::int64_t{p.y} - band.top) >= 6;
}

double RatioOf(double a, double b) { return b == 0 ? std::numeric_limits<double>::infinity() : a / b; }

}  // namespace prism

// BZoomSetScaleSteps(base, in, out): new tables of scales.  The base lies in
// 1..1000; a given table has a count of 1..10, starts at the base and rises
// strictly.  A null table keeps the old one, also when its first step no
// longer equals the new base.  1 when all is accepted and copied (all 11
// words of a given table), else 0 and nothing changed.
PRISM_API BOOL WINAPI BZoomSetScaleSteps(int base, const int* inSteps, const int* outSteps) {
    using namespace prism;
    if (base < 1 || base > 1000) return 0;
    if (inSteps && !TableAcceptable(inSteps, base)) return 0;
    if (outSteps && !TableAcceptable(outSteps, base)) return 0;
    if (inSteps) std::memcpy(ZoomInSteps, inSteps, sizeof(ZoomInSteps));
    if (outSteps) std::memcpy(ZoomOutSteps, outSteps, sizeof(ZoomOutSteps));
    ZoomBase = base;
    return 1;
}

// BZoomGetScaleSteps(in, out): the base; each non-null array receives a copy
// of its table, 11 words.
PRISM_API int WINAPI BZoomGetScaleSteps(int* inSteps, int* outSteps) {
    using namespace prism;
    if (inSteps) std::memcpy(inSteps, ZoomInSteps, sizeof(ZoomInSteps));
    if (outSteps) std::memcpy(outSteps, ZoomOutSteps, sizeof(ZoomOutSteps));
    return ZoomBase;
}
