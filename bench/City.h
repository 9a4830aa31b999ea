// The model of the benchmarks: a town of houses with windows. Each quad is a function of its number, the
// same on every machine.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

using Point = std::array<double, 3>; // [Units: metres] Z up

// One face, its corners counter-clockwise about the normal.
struct Quad {
    std::array<Point, 4> Corners;
    Point Normal;
    std::array<std::array<double, 2>, 4> Coordinates;
    uint32_t Material = 0;
};

constexpr uint32_t MaterialCount = 50;
constexpr uint32_t GlassMaterialCount = 5; // the first ones; each house has another one for its walls

// A hash of a position and a purpose.
inline uint32_t Scatter(uint64_t position, uint64_t purpose) {
    uint64_t x = position * 0x9E3779B97F4A7C15 + purpose * 0xD1B54A32D192ED03 + 20240229;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
    return static_cast<uint32_t>(x >> 32);
}

// Quad number `index` of the town. Houses follow one another; each has four walls of three floors by
// five bays, a bay being a window with four strips of wall around it, and a flat roof of four quads.
inline Quad CityQuad(uint64_t index) {
    constexpr uint64_t partsPerBay = 5;
    constexpr uint64_t bays = 5;
    constexpr uint64_t quadsPerWall = partsPerBay * bays * 3;
    constexpr uint64_t quadsPerHouse = 4 * quadsPerWall + 4;
    constexpr uint64_t housesPerStreet = 100;
    const uint64_t house = index / quadsPerHouse;
    const uint64_t part = index % quadsPerHouse;
    const double bay = 2.0 + 0.25 * (Scatter(house, 1) % 8);
    const double floor = 2.5 + 0.125 * (Scatter(house, 2) % 8);
    const double x = 30.0 * static_cast<double>(house % housesPerStreet);
    const uint64_t street = house / housesPerStreet;
    const double y = 30.0 * static_cast<double>(street);
    const double side = bay * static_cast<double>(bays);

    Quad quad;
    quad.Material = GlassMaterialCount + Scatter(house, 3) % (MaterialCount - GlassMaterialCount);
    Point origin = {x, y, 3 * floor};
    Point along = {1, 0, 0};
    Point up = {0, 1, 0};
    double s0 = 0;
    double s1 = side / 2;
    double t0 = 0;
    double t1 = side / 2;
    if (part >= 4 * quadsPerWall) {
        const uint64_t corner = part - 4 * quadsPerWall;
        s0 += corner % 2 == 1 ? side / 2 : 0;
        t0 += corner / 2 == 1 ? side / 2 : 0;
        s1 += s0;
        t1 += t0;
        quad.Normal = {0, 0, 1};
    } else {
        constexpr Point directions[4] = {{1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}};
        const uint64_t wall = part / quadsPerWall;
        along = directions[wall];
        up = {0, 0, 1};
        origin = {wall == 1 || wall == 2 ? x + side : x, wall >= 2 ? y + side : y, 0};
        quad.Normal = {along[1], -along[0], 0};
        const uint64_t cell = part % quadsPerWall / partsPerBay;
        const double left = bay * static_cast<double>(cell % bays);
        const uint64_t storey = cell / bays;
        const double bottom = floor * static_cast<double>(storey);
        const double s[4] = {left, left + 0.25 * bay, left + 0.75 * bay, left + bay};
        const double t[4] = {bottom, bottom + 0.25 * floor, bottom + 0.75 * floor, bottom + floor};
        constexpr int spans[partsPerBay][4] = {
            {0, 3, 0, 1}, {0, 3, 2, 3}, {0, 1, 1, 2}, {2, 3, 1, 2}, {1, 2, 1, 2}};
        const int* span = spans[part % partsPerBay];
        s0 = s[span[0]];
        s1 = s[span[1]];
        t0 = t[span[2]];
        t1 = t[span[3]];
        if (part % partsPerBay == 4) {
            quad.Material = Scatter(house, 4) % GlassMaterialCount;
        }
    }
    const double across[4] = {s0, s1, s1, s0};
    const double above[4] = {t0, t0, t1, t1};
    for (size_t i = 0; i < 4; ++i) {
        for (size_t axis = 0; axis < 3; ++axis) {
            quad.Corners[i][axis] = origin[axis] + along[axis] * across[i] + up[axis] * above[i];
        }
        quad.Coordinates[i] = {0.5 * across[i], 0.5 * above[i]};
    }
    return quad;
}
