// Edge functions on whole numbers (Juan Pineda, 1988), with the top-left rule. Values over a triangle
// are planes in screen space, divided by the nearness for perspective. Tiles that hide their part of
// the triangle completely are skipped (Ned Greene and others, 1993, with two levels).
#include "inspect/drawing/Rasteriser.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

// Corners lie on a grid of this many steps per pixel, so that edges are exact.
constexpr int64_t Steps = 256;
constexpr int64_t HalfPixel = Steps / 2;

// The least share of what is behind a pixel's blended surfaces that is worth drawing: a quarter of a
// byte's step.
constexpr float LeastThrough = 1.0F / 1024;

int64_t TilesAlong(int64_t pixels) {
    return (pixels + TileSide - 1) / TileSide;
}

struct GridPoint {
    int64_t X;
    int64_t Y;
};

GridPoint ToGrid(const ScreenCorner& corner) {
    return {std::llround(corner.X * Steps), std::llround(corner.Y * Steps)};
}

// Above 0 on the inner side of the edge from one corner to the next.
struct Edge {
    int64_t Value; // At the current pixel centre.
    int64_t StepX; // To the next pixel on the right.
    int64_t StepY; // To the next row.
};

Edge MakeEdge(GridPoint from, GridPoint to, GridPoint start) {
    const int64_t dx = to.X - from.X;
    const int64_t dy = to.Y - from.Y;
    int64_t value = dx * (start.Y - from.Y) - dy * (start.X - from.X);
    // With clockwise corners and y down, upper edges go right and left edges go up. They keep their
    // pixels.
    const bool keepsPixels = dy < 0 || (dy == 0 && dx > 0);
    value -= keepsPixels ? 0 : 1;
    return {value, -dy * Steps, dx * Steps};
}

// A value that is linear over the screen: at a pixel centre, with steps to the next pixels.
struct Plane {
    double Start;
    double StepX;
    double StepY;
};

// The input for the planes over one triangle: its edges from its first corner, and the centre of its
// first pixel relative to that corner. [Units: pixels]
struct PlaneFrame {
    double X1, Y1, X2, Y2;
    double Area; // Twice the triangle's, above 0.
    double FromX, FromY;
};

Plane MakePlane(const PlaneFrame& frame, double value0, double value1, double value2) {
    const double rise1 = value1 - value0;
    const double rise2 = value2 - value0;
    const double stepX = (rise1 * frame.Y2 - rise2 * frame.Y1) / frame.Area;
    const double stepY = (rise2 * frame.X1 - rise1 * frame.X2) / frame.Area;
    return {value0 + stepX * frame.FromX + stepY * frame.FromY, stepX, stepY};
}

double ValueAt(const Plane& plane, double column, double row) {
    return plane.Start + plane.StepX * column + plane.StepY * row;
}

// The values over one triangle. U, V and Light are divided by the distance.
struct Planes {
    Plane Nearness;
    Plane U;
    Plane V;
    Plane Light;
};

// The number of picture pixels along the longer side of a screen pixel.
double TexelsPerPixel(const Planes& planes, const Mipmaps& picture, double u, double v,
                      double nearness) {
    const auto width = static_cast<double>(picture.Levels[0].Width);
    const auto height = static_cast<double>(picture.Levels[0].Height);
    const auto squared = [&](double uStep, double vStep, double nearnessStep) {
        const double du = (uStep - u * nearnessStep) / nearness * width;
        const double dv = (vStep - v * nearnessStep) / nearness * height;
        return du * du + dv * dv;
    };
    return std::sqrt(std::max(squared(planes.U.StepX, planes.V.StepX, planes.Nearness.StepX),
                              squared(planes.U.StepY, planes.V.StepY, planes.Nearness.StepY)));
}

Colour ColourAt(const Planes& planes, const Surface& surface, double column, double row,
                double nearness) {
    Colour colour = surface.BaseColour;
    if (surface.Picture != nullptr) {
        const double u = ValueAt(planes.U, column, row) / nearness;
        const double v = ValueAt(planes.V, column, row) / nearness;
        const Colour sample = SampleMipmaps(*surface.Picture, u, v,
                                            TexelsPerPixel(planes, *surface.Picture, u, v, nearness));
        for (size_t channel = 0; channel < 4; ++channel) {
            colour[channel] *= sample[channel];
        }
    }
    return colour;
}

void DrawPixel(const Planes& planes, const Surface& surface, double column, double row, double nearness,
               std::array<float, 3>& pixel) {
    const Colour colour = ColourAt(planes, surface, column, row, nearness);
    const auto light = static_cast<float>(ValueAt(planes.Light, column, row) / nearness);
    const float alpha = surface.IsBlended ? colour[3] : 1.0F;
    for (size_t channel = 0; channel < 3; ++channel) {
        pixel[channel] += (std::min(colour[channel] * light, 1.0F) - pixel[channel]) * alpha;
    }
}

// The first pixel whose centre is at or after the place.
int64_t FirstPixel(int64_t place) {
    return (place + HalfPixel - 1) / Steps;
}

// A triangle to draw: its bounding box within the canvas, in pixels, and its values from the upper left
// pixel on.
struct Triangle {
    int64_t Left, Top, Right, Bottom;
    std::array<Edge, 3> Edges;
    Planes Values;
};

// Nothing if the triangle is not visible.
std::optional<Triangle> MakeTriangle(const Canvas& canvas, const std::array<ScreenCorner, 3>& corners) {
    const GridPoint a = ToGrid(corners[0]);
    const GridPoint b = ToGrid(corners[1]);
    const GridPoint c = ToGrid(corners[2]);
    const int64_t area = (b.X - a.X) * (c.Y - a.Y) - (b.Y - a.Y) * (c.X - a.X);
    if (area <= 0) {
        return std::nullopt;
    }
    const int64_t left = std::max<int64_t>(FirstPixel(std::min({a.X, b.X, c.X})), 0);
    const int64_t top = std::max<int64_t>(FirstPixel(std::min({a.Y, b.Y, c.Y})), 0);
    const int64_t right = std::min<int64_t>(FirstPixel(std::max({a.X, b.X, c.X}) + 1), canvas.Width);
    const int64_t bottom = std::min<int64_t>(FirstPixel(std::max({a.Y, b.Y, c.Y}) + 1), canvas.Height);
    if (left >= right || top >= bottom) {
        return std::nullopt;
    }
    const GridPoint start = {left * Steps + HalfPixel, top * Steps + HalfPixel};
    const auto pixels = [](int64_t from, int64_t to) {
        return static_cast<double>(to - from) / static_cast<double>(Steps);
    };
    const PlaneFrame frame = {pixels(a.X, b.X),
                              pixels(a.Y, b.Y),
                              pixels(a.X, c.X),
                              pixels(a.Y, c.Y),
                              static_cast<double>(area) / static_cast<double>(Steps * Steps),
                              pixels(a.X, start.X),
                              pixels(a.Y, start.Y)};
    const auto& [p, q, r] = corners;
    return Triangle{
        left,
        top,
        right,
        bottom,
        {MakeEdge(a, b, start), MakeEdge(b, c, start), MakeEdge(c, a, start)},
        {MakePlane(frame, p.Nearness, q.Nearness, r.Nearness),
         MakePlane(frame, p.U * p.Nearness, q.U * q.Nearness, r.U * r.Nearness),
         MakePlane(frame, p.V * p.Nearness, q.V * q.Nearness, r.V * r.Nearness),
         MakePlane(frame, p.Light * p.Nearness, q.Light * q.Nearness, r.Light * r.Nearness)}};
}

// Columns or rows, without End.
struct Span {
    int64_t First;
    int64_t End;
};

// The pixels of a row, of the first width ones, that are inside all edges.
Span PixelsOfRow(const std::array<Edge, 3>& edges, int64_t width) {
    Span span = {0, width};
    for (const Edge& edge : edges) {
        if (edge.StepX > 0 && edge.Value < 0) {
            span.First = std::max(span.First, (edge.StepX - 1 - edge.Value) / edge.StepX);
        } else if (edge.Value < 0) {
            span.End = 0;
        } else if (edge.Value + edge.StepX * (width - 1) < 0) {
            span.End = std::min(span.End, edge.Value / -edge.StepX + 1);
        }
    }
    return span;
}

// The largest value of the plane in these columns and rows.
double MostWithin(const Plane& plane, Span columns, Span rows) {
    return ValueAt(plane, static_cast<double>(plane.StepX > 0 ? columns.End - 1 : columns.First),
                   static_cast<double>(plane.StepY > 0 ? rows.End - 1 : rows.First));
}

// Counts the pixels visited in a tile. Searches for the farthest pixel again when the visits since the
// last search equal the cost of a search.
void CountVisits(Canvas& canvas, Tile& tile, int64_t column, int64_t row, uint32_t visits,
                 bool changed) {
    tile.Visits += visits;
    tile.HasChanged = tile.HasChanged || changed;
    if (!tile.HasChanged || tile.Visits < TileSide * TileSide) {
        return;
    }
    const int64_t right = std::min<int64_t>(column + TileSide, canvas.Width);
    const int64_t bottom = std::min<int64_t>(row + TileSide, canvas.Height);
    float farthest = std::numeric_limits<float>::infinity();
    for (int64_t y = row; y < bottom; ++y) {
        for (int64_t x = column; x < right; ++x) {
            const auto place = static_cast<size_t>(y) * canvas.Width + static_cast<size_t>(x);
            farthest = std::min(farthest, canvas.Nearness[place]);
        }
    }
    tile = {farthest, 0, false};
}

// The part of a triangle in a row of tiles: rows from the triangle's first one, and the pixels of each,
// with columns from the triangle's first one.
struct TileRow {
    Span Rows;
    std::array<Span, TileSide> Pixels; // of each row, from the first one of Rows
    Span Columns;                      // of all rows together; empty if none has a pixel
};

// Advances the edges from the first row to the one after the last.
TileRow MakeTileRow(const Triangle& triangle, Span rows, std::array<Edge, 3>& edges) {
    const int64_t width = triangle.Right - triangle.Left;
    TileRow tiles = {rows, {}, {width, 0}};
    for (int64_t row = rows.First; row < rows.End; ++row) {
        const Span pixels = PixelsOfRow(edges, width);
        tiles.Pixels[static_cast<size_t>(row - rows.First)] = pixels;
        if (pixels.First < pixels.End) {
            tiles.Columns = {std::min(tiles.Columns.First, pixels.First),
                             std::max(tiles.Columns.End, pixels.End)};
        }
        for (Edge& edge : edges) {
            edge.Value += edge.StepY;
        }
    }
    return tiles;
}

// The result of visiting one tile.
struct Visit {
    uint32_t Pixels = 0; // pixels visited
    bool HasChanged = false;
};

// ForEachNearer within these columns of a row of tiles.
template <typename Use> Visit VisitTile(const Canvas& canvas, const Triangle& triangle,
                                        const TileRow& tiles, Span columns, Use use) {
    Visit visit;
    for (int64_t y = tiles.Rows.First; y < tiles.Rows.End; ++y) {
        const Span pixels = tiles.Pixels[static_cast<size_t>(y - tiles.Rows.First)];
        const int64_t end = std::min(pixels.End, columns.End);
        const auto row = static_cast<double>(y);
        for (int64_t x = std::max(pixels.First, columns.First); x < end; ++x, ++visit.Pixels) {
            const auto column = static_cast<double>(x);
            const double nearness = ValueAt(triangle.Values.Nearness, column, row);
            const auto place = static_cast<size_t>(triangle.Top + y) * canvas.Width +
                               static_cast<size_t>(triangle.Left + x);
            if (static_cast<float>(nearness) > canvas.Nearness[place]) {
                visit.HasChanged = use(place, column, row, nearness) || visit.HasChanged;
            }
        }
    }
    return visit;
}

// Calls use(place, column, row, nearness) for each pixel of the triangle that is nearer than the canvas
// there. use returns whether it changed the canvas's nearness.
template <typename Use> void ForEachNearer(Canvas& canvas, const Triangle& triangle, Use use) {
    std::array<Edge, 3> edges = triangle.Edges;
    for (int64_t top = triangle.Top; top < triangle.Bottom;) {
        const int64_t tileRow = top / TileSide;
        const int64_t bottom = std::min(triangle.Bottom, (tileRow + 1) * TileSide);
        const TileRow tiles = MakeTileRow(triangle, {top - triangle.Top, bottom - triangle.Top}, edges);
        for (int64_t first = tiles.Columns.First; first < tiles.Columns.End;) {
            const int64_t tileColumn = (triangle.Left + first) / TileSide;
            const Span columns = {
                first, std::min(tiles.Columns.End, (tileColumn + 1) * TileSide - triangle.Left)};
            first = columns.End;
            Tile& tile =
                canvas.Tiles[static_cast<size_t>(tileRow * TilesAlong(canvas.Width) + tileColumn)];
            const double most = MostWithin(triangle.Values.Nearness, columns, tiles.Rows);
            if (static_cast<float>(most) > tile.Farthest) {
                const Visit visit = VisitTile(canvas, triangle, tiles, columns, use);
                CountVisits(canvas, tile, tileColumn * TileSide, tileRow * TileSide, visit.Pixels,
                            visit.HasChanged);
            }
        }
        top = bottom;
    }
}

} // namespace

Canvas BlackCanvas(uint32_t width, uint32_t height) {
    Canvas canvas;
    canvas.Width = width;
    canvas.Height = height;
    canvas.Colours.assign(size_t{width} * height, {0, 0, 0});
    canvas.Nearness.assign(size_t{width} * height, 0);
    canvas.Tiles.resize(static_cast<size_t>(TilesAlong(width) * TilesAlong(height)));
    return canvas;
}

void DrawTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners, const Surface& surface) {
    const auto triangle = MakeTriangle(canvas, corners);
    if (!triangle) {
        return;
    }
    ForEachNearer(canvas, *triangle, [&](size_t place, double column, double row, double nearness) {
        DrawPixel(triangle->Values, surface, column, row, nearness, canvas.Colours[place]);
        if (!surface.IsBlended) {
            canvas.Nearness[place] = static_cast<float>(nearness);
        }
        return !surface.IsBlended;
    });
}

void HideBehindTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners,
                        const Surface& surface) {
    const auto triangle = MakeTriangle(canvas, corners);
    if (!triangle) {
        return;
    }
    if (surface.IsBlended) {
        canvas.Veils.resize(canvas.Nearness.size());
    }
    ForEachNearer(canvas, *triangle, [&](size_t place, double column, double row, double nearness) {
        Veil veil = surface.IsBlended ? canvas.Veils[place] : Veil();
        if (surface.IsBlended) {
            const float alpha = ColourAt(triangle->Values, surface, column, row, nearness)[3];
            veil.Through *= 1.0F - alpha;
        } else {
            veil.Through = 0;
        }
        veil.Nearness = std::min(veil.Nearness, static_cast<float>(nearness));
        const bool isClosed = veil.Through < LeastThrough;
        if (isClosed) {
            // Just behind all of them, so that they are still drawn.
            canvas.Nearness[place] =
                std::max(canvas.Nearness[place], std::nextafter(veil.Nearness, 0.0F));
        }
        if (surface.IsBlended) {
            canvas.Veils[place] = veil;
        }
        return isClosed;
    });
}
