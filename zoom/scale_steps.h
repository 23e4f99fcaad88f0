// The stepped zoom's arithmetic: the two tables of scales with their base,
// the table and fine steps, and the conversion of a ratio into a scale.
// Plain integer and float work, compiled in every build.
#pragma once

#include "core/numeric.h"

#include "prism32.h"

namespace prism {

// A step table: count (1..10), then the steps, rising; unused words 0.
constexpr int kStepTableWords = 11;

// Library-wide, changed only by BZoomSetScaleSteps.  A scale num / den has
// num or den equal to the base: num above it enlarges, den above it reduces.
extern int ZoomBase;
extern int ZoomInSteps[kStepTableWords];
extern int ZoomOutSteps[kStepTableWords];

// Modes of a gesture: the bit of 0x10 marks a mouse gesture (capture and
// rubber band); 17..21 and 33..37 keep, step up, step down, fine up, fine
// down.
constexpr int kMouseGesture = 0x10;

// The first table entry at least v; the one after it on an exact hit.
int NextStep(int v, const int* table);
// The last table entry at most v; the one before it on an exact hit.
int PreviousStep(int v, const int* table);
// About 5 per cent of v, at least 1.
int FineStep(int v);
int FineUp(int v, int limit);
int FineDown(int v, int limit);
// Brings a scale to the form with num or den equal to the base.
void NormaliseScale(int* num, int* den);
// The scale fields of the record: its start scale, stepped as its mode says.
void StepScale(BZoomState* state);
// Writes the scale nearest the ratio f (limited to the tables' range) into
// four numbers in zoom-array order.
void RatioToScale(double f, int* scale);

// Puts a rectangle's corners in order: left <= right, top <= bottom.
void OrderRect(RECT* r);
// Is the point at least 6 pixels away from the band's start on both axes?
bool BandIsLargeEnough(POINT p, const RECT& band);
// a / b, or +infinity where b is 0: a zero-sized band asks for the largest
// scale, which the callers limit.
double RatioOf(double a, double b);

}  // namespace prism
