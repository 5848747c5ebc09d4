#include "camera_sim/picture/TestCard.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "camera_sim/picture/Font.h"

namespace camera_sim {
namespace {

struct Color {
    int red;
    int green;
    int blue;
};
constexpr Color kBlack{0, 0, 0};
constexpr Color kWhite{255, 255, 255};
constexpr Color kAim{255, 64, 32};
constexpr Color kWatched{255, 32, 32};
constexpr std::array kBars = {Color{192, 192, 192}, Color{192, 192, 0}, Color{0, 192, 192},
                              Color{0, 192, 0},     Color{192, 0, 192}, Color{192, 0, 0},
                              Color{0, 0, 192},     Color{32, 32, 32}};
constexpr double kNeutralBrightness = 50;
constexpr double kFullBrightness = 100;

/// Draws on a picture; what lies outside is left out.
class CCanvas {
 public:
    explicit CCanvas(Resolution size) : picture_(size) {}

    int Width() const { return picture_.size.width; }
    int Height() const { return picture_.size.height; }
    Picture Take() { return std::move(picture_); }

    /// @p share of the colour, the rest of what is there; 0..1.
    void Blend(int x, int y, Color color, double share) {
        if (x < 0 || y < 0 || x >= Width() || y >= Height()) {
            return;
        }
        const auto offset = (static_cast<std::size_t>(y) * static_cast<std::size_t>(Width()) +
                             static_cast<std::size_t>(x)) *
                            Picture::kChannels;
        const std::array parts = {color.red, color.green, color.blue};
        for (std::size_t i = 0; i < parts.size(); ++i) {
            std::uint8_t& old = picture_.pixels[offset + i];
            old = static_cast<std::uint8_t>(std::lround(old * (1 - share) + parts[i] * share));
        }
    }

    void Fill(int left, int top, int width, int height, Color color, double share = 1) {
        const int right = std::min(left + width, Width());
        const int bottom = std::min(top + height, Height());
        for (int y = std::max(top, 0); y < bottom; ++y) {
            for (int x = std::max(left, 0); x < right; ++x) {
                Blend(x, y, color, share);
            }
        }
    }

 private:
    Picture picture_;
};

Color Lit(Color color, double brightness) {
    const double level = std::clamp(brightness, 0.0, kFullBrightness);
    const auto light = [level](int part) {
        // Below the middle towards black, above it towards white.
        const double lit = level <= kNeutralBrightness
                               ? part * level / kNeutralBrightness
                               : part + (255 - part) * (level / kNeutralBrightness - 1);
        return static_cast<int>(std::lround(lit));
    };
    return {light(color.red), light(color.green), light(color.blue)};
}

/// Colour bars above a grey ramp.
void DrawBackground(CCanvas& canvas, double brightness) {
    const int ramp = canvas.Height() - canvas.Height() / 4;
    const int last = std::max(canvas.Width() - 1, 1);
    for (int x = 0; x < canvas.Width(); ++x) {
        const auto bar =
            static_cast<std::size_t>(x) * kBars.size() / static_cast<std::size_t>(canvas.Width());
        const int grey = 255 * x / last;
        canvas.Fill(x, 0, 1, ramp, Lit(kBars[bar], brightness));
        canvas.Fill(x, ramp, 1, canvas.Height() - ramp, Lit({grey, grey, grey}, brightness));
    }
}

void DrawMotionCells(CCanvas& canvas, const MotionCells& cells) {
    constexpr double kCellShare = 0.35;
    constexpr double kLineShare = 0.25;
    const int columns = std::clamp(cells.columns, 0, canvas.Width());
    const int rows = std::clamp(cells.rows, 0, canvas.Height());
    const auto edge = [](int side, int index, int count) { return side * index / count; };
    for (int row = 0; row < rows; ++row) {
        const int top = edge(canvas.Height(), row, rows);
        const int height = edge(canvas.Height(), row + 1, rows) - top;
        for (int column = 0; column < columns; ++column) {
            const int left = edge(canvas.Width(), column, columns);
            const int width = edge(canvas.Width(), column + 1, columns) - left;
            const auto index =
                static_cast<std::size_t>(row) * static_cast<std::size_t>(cells.columns) +
                static_cast<std::size_t>(column);
            if (index < cells.active.size() && cells.active[index]) {
                canvas.Fill(left, top, width, height, kWatched, kCellShare);
            }
            canvas.Fill(left, top, width, 1, kWhite, kLineShare);
            canvas.Fill(left, top + 1, 1, height - 1, kWhite, kLineShare);
        }
    }
}

/// The horizon, and where on the dome the camera looks: a ring that is larger the closer it looks.
void DrawAim(CCanvas& canvas, const PtzPosition& position) {
    constexpr double kSmallestRing = 0.05;
    constexpr double kRingGrowth = 0.2;
    constexpr double kHorizonShare = 0.5;
    const double shortSide = std::min(canvas.Width(), canvas.Height());
    const int thickness = std::max(1, canvas.Height() / 160);
    const double pan = std::clamp(position.pan, -1.0, 1.0);
    const double tilt = std::clamp(position.tilt, -1.0, 1.0);
    const double zoom = std::clamp(position.zoom, 0.0, 1.0);
    const int x = static_cast<int>(std::lround((pan + 1) / 2 * (canvas.Width() - 1)));
    const int y = static_cast<int>(std::lround((1 - tilt) / 2 * (canvas.Height() - 1)));
    const int radius = static_cast<int>(shortSide * (kSmallestRing + kRingGrowth * zoom));

    canvas.Fill(0, canvas.Height() / 2, canvas.Width(), thickness, kWhite, kHorizonShare);
    canvas.Fill(x - 2 * radius, y - thickness / 2, 4 * radius, thickness, kAim);
    canvas.Fill(x - thickness / 2, y - 2 * radius, thickness, 4 * radius, kAim);
    for (int dy = -radius - thickness; dy <= radius + thickness; ++dy) {
        for (int dx = -radius - thickness; dx <= radius + thickness; ++dx) {
            if (std::abs(std::hypot(dx, dy) - radius) <= thickness) {
                canvas.Blend(x + dx, y + dy, kAim, 1);
            }
        }
    }
}

/// One byte per character: what is outside ASCII becomes a character that the font lacks.
std::string Displayable(std::string_view text) {
    constexpr char kUnknown = '\x7F';
    std::string out;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool continuation = (byte & 0xC0U) == 0x80U;
        if (!continuation) {
            out += byte < 0x80U ? character : kUnknown;
        }
    }
    return out;
}

void DrawGlyph(CCanvas& canvas, int left, int top, int scale, char character) {
    const Glyph& glyph = GlyphOf(character);
    for (int row = 0; row < kGlyphHeight; ++row) {
        for (int column = 0; column < kGlyphWidth; ++column) {
            const auto dot = 1U << static_cast<unsigned>(kGlyphWidth - 1 - column);
            if ((glyph[static_cast<std::size_t>(row)] & dot) != 0) {
                canvas.Fill(left + column * scale, top + row * scale, scale, scale, kWhite);
            }
        }
    }
}

/// White on a darkened strip.
void DrawText(CCanvas& canvas, const CardText& placed) {
    constexpr double kStripShare = 0.6;
    const int scale = std::max(1, canvas.Width() / 320);
    const int advance = (kGlyphWidth + 1) * scale;
    std::string text = Displayable(placed.text);
    text.resize(std::min(text.size(), static_cast<std::size_t>(canvas.Width() / advance)));
    if (text.empty()) {
        return;
    }
    const int width = static_cast<int>(text.size()) * advance + scale;
    const int height = (kGlyphHeight + 2) * scale;
    const auto start = [](double place, int side, int size) {
        const double middle = (std::clamp(place, -1.0, 1.0) + 1) / 2 * side;
        return std::clamp(static_cast<int>(std::lround(middle)) - size / 2, 0,
                          std::max(side - size, 0));
    };
    int left = start(placed.x, canvas.Width(), width);
    const int top = start(-placed.y, canvas.Height(), height);
    canvas.Fill(left, top, width, height, kBlack, kStripShare);
    for (const char character : text) {
        DrawGlyph(canvas, left + scale, top + scale, scale, character);
        left += advance;
    }
}

std::string PositionText(const PtzPosition& position) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "PAN %+.3f TILT %+.3f ZOOM %.3f", position.pan,
                  position.tilt, position.zoom);
    return text.data();
}

}  // namespace

Resolution CardSize(Resolution resolution) {
    const double width = std::max(resolution.width, 1);
    const double height = std::max(resolution.height, 1);
    const double factor = std::min(1.0, kLargestCardSide / std::max(width, height));
    const auto scaled = [factor](double side) {
        return std::max(1, static_cast<int>(std::lround(side * factor)));
    };
    return {scaled(width), scaled(height)};
}

Picture Draw(const TestCard& card) {
    CCanvas canvas(card.size);
    DrawBackground(canvas, card.brightness);
    if (card.motion) {
        DrawMotionCells(canvas, *card.motion);
    }
    if (card.position) {
        DrawAim(canvas, *card.position);
    }
    DrawText(canvas, {card.cameraName, -1, -1});
    DrawText(canvas, {card.clock, 1, -1});
    if (card.position) {
        DrawText(canvas, {PositionText(*card.position), -1, -0.85});
    }
    for (const CardText& text : card.texts) {
        DrawText(canvas, text);
    }
    return canvas.Take();
}

}  // namespace camera_sim
