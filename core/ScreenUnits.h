#pragma once
// The units the dialogs' layouts are given in, turned into screen pixels: twips (1/1440 inch,
// grid column widths) and points (1/72 inch, combo column widths), at the screen's dots per
// inch and rounded to the nearest pixel, as the window system scales them.
namespace kitra {

inline int TwipsToPixels(int twips, int dotsPerInch) {
    const long scaled = static_cast<long>(twips) * dotsPerInch;
    return static_cast<int>(scaled >= 0 ? (scaled + 720) / 1440 : -((-scaled + 720) / 1440));
}

inline int PointsToPixels(int points, int dotsPerInch) { return TwipsToPixels(points * 20, dotsPerInch); }

}  // namespace kitra
