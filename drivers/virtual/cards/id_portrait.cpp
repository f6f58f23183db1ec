#include "drivers/virtual/cards/id_portrait.h"

#include <array>

namespace drivers::cards {

namespace {

/// The features of one face, in pixels of the photo.
struct Face {
    Color skin;
    Color hair;
    Color clothes;
    double halfWidth;
    double halfHeight;
    double eyeDistance;
    double eyeSize;
    double browLift;
    double noseLength;
    double mouthWidth;
    double smile;
    double fringe;
    bool glasses;
    bool longHair;
};

constexpr double kMiddle = kIdPhotoWidth / 2.0;
constexpr double kHeadY = 56;
constexpr Color kInk{0.16, 0.13, 0.13};

/// A row of numbers that differ much for seeds that differ little.
class Variation {
public:
    explicit Variation(std::uint64_t seed) : m_state(seed) {}

    double between(double low, double high)
    {
        return low + (high - low) * static_cast<double>(next() >> 11U) / 9007199254740992.0;
    }

    template <std::size_t Count>
    const Color &oneOf(const std::array<Color, Count> &colors)
    {
        return colors.at(next() % Count);
    }

private:
    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    std::uint64_t m_state;
};

Face faceOf(const IdCard &card)
{
    static constexpr std::array<Color, 4> kSkins{
        {{0.98, 0.86, 0.74}, {0.95, 0.80, 0.66}, {0.90, 0.73, 0.58}, {0.78, 0.58, 0.43}}};
    static constexpr std::array<Color, 4> kHairs{
        {{0.08, 0.07, 0.08}, {0.18, 0.12, 0.10}, {0.32, 0.20, 0.12}, {0.45, 0.45, 0.47}}};
    static constexpr std::array<Color, 5> kClothes{
        {{0.16, 0.24, 0.42}, {0.30, 0.31, 0.34}, {0.42, 0.16, 0.20}, {0.14, 0.36, 0.33}, {0.55, 0.47, 0.36}}};
    const std::string names = card.field("name") + "/" + card.field("englishName") + "/" + card.field("chineseName");
    Variation vary(textNumber(names) + card.portrait().seed);
    Face face{};
    face.skin = vary.oneOf(kSkins);
    face.hair = vary.oneOf(kHairs);
    face.clothes = vary.oneOf(kClothes);
    face.halfWidth = vary.between(23, 27);
    face.halfHeight = vary.between(29, 33);
    face.eyeDistance = vary.between(10, 12.5);
    face.eyeSize = vary.between(2.3, 3.2);
    face.browLift = vary.between(-1.5, 0.6);
    face.noseLength = vary.between(7, 11);
    face.mouthWidth = vary.between(7, 11);
    face.smile = vary.between(0, 4);
    face.fringe = vary.between(0.35, 0.6);
    face.glasses = card.portrait().glasses;
    face.longHair = card.portrait().longHair;
    return face;
}

void drawBody(Canvas &canvas, const Face &face)
{
    cairo_t *context = canvas.context();
    cairo_rectangle(context, kMiddle - 9, kHeadY + 20, 18, 26);
    canvas.fill({face.skin.red * 0.93, face.skin.green * 0.91, face.skin.blue * 0.9});
    cairo_move_to(context, 2, kIdPhotoHeight);
    cairo_curve_to(context, 6, 104, 22, 102, kMiddle - 11, 97);
    cairo_line_to(context, kMiddle, 110);
    cairo_line_to(context, kMiddle + 11, 97);
    cairo_curve_to(context, 80, 102, 96, 104, 100, kIdPhotoHeight);
    cairo_close_path(context);
    canvas.fill(face.clothes);
    cairo_move_to(context, kMiddle - 11, 97);
    cairo_line_to(context, kMiddle, 110);
    cairo_line_to(context, kMiddle + 11, 97);
    canvas.stroke({1, 1, 1}, 2.5);
}

void drawBackHair(Canvas &canvas, const Face &face)
{
    if (!face.longHair)
        return;
    cairo_t *context = canvas.context();
    const double side = face.halfWidth + 6;
    cairo_move_to(context, kMiddle - side, kHeadY - 6);
    cairo_curve_to(context, kMiddle - side - 4, 80, kMiddle - side - 2, 98, kMiddle - side + 5, 106);
    cairo_line_to(context, kMiddle + side - 5, 106);
    cairo_curve_to(context, kMiddle + side + 2, 98, kMiddle + side + 4, 80, kMiddle + side, kHeadY - 6);
    cairo_close_path(context);
    canvas.fill(face.hair);
}

void drawHead(Canvas &canvas, const Face &face)
{
    for (const double side : {-1.0, 1.0}) {
        canvas.ellipse(kMiddle + side * face.halfWidth, kHeadY + 2, 4, 7);
        canvas.fill({face.skin.red * 0.95, face.skin.green * 0.93, face.skin.blue * 0.92});
    }
    canvas.ellipse(kMiddle, kHeadY, face.halfWidth, face.halfHeight);
    canvas.fill(face.skin);
}

void drawTopHair(Canvas &canvas, const Face &face)
{
    cairo_t *context = canvas.context();
    const double top = kHeadY - face.halfHeight;
    const double hairline = top + face.halfHeight * face.fringe;
    const double side = face.halfWidth + 1.5;
    cairo_move_to(context, kMiddle - side, kHeadY - 4);
    cairo_curve_to(context, kMiddle - side - 3, top - 6, kMiddle - 14, top - 9, kMiddle, top - 8);
    cairo_curve_to(context, kMiddle + 14, top - 9, kMiddle + side + 3, top - 6, kMiddle + side, kHeadY - 4);
    cairo_curve_to(context, kMiddle + side - 4, hairline + 2, kMiddle + 10, hairline - 3, kMiddle + 4, hairline);
    cairo_curve_to(context, kMiddle - 8, hairline + 3, kMiddle - side + 4, hairline + 2, kMiddle - side, kHeadY - 4);
    cairo_close_path(context);
    canvas.fill(face.hair);
}

void drawEyes(Canvas &canvas, const Face &face)
{
    cairo_t *context = canvas.context();
    const double eyeY = kHeadY + 1;
    for (const double side : {-1.0, 1.0}) {
        const double eyeX = kMiddle + side * face.eyeDistance;
        canvas.ellipse(eyeX, eyeY, face.eyeSize + 2, face.eyeSize);
        canvas.fill({1, 1, 1});
        canvas.ellipse(eyeX, eyeY, face.eyeSize * 0.8, face.eyeSize * 0.8);
        canvas.fill(kInk);
        cairo_move_to(context, eyeX - side * 5, eyeY - 7);
        cairo_line_to(context, eyeX + side * 5, eyeY - 7 - face.browLift);
        canvas.stroke(face.hair, 2);
        if (face.glasses) {
            canvas.ellipse(eyeX, eyeY, 8.5, 7);
            canvas.stroke(kInk, 1.4);
        }
    }
    if (face.glasses) {
        cairo_move_to(context, kMiddle - face.eyeDistance + 8.5, eyeY);
        cairo_line_to(context, kMiddle + face.eyeDistance - 8.5, eyeY);
        canvas.stroke(kInk, 1.4);
    }
}

void drawNoseAndMouth(Canvas &canvas, const Face &face)
{
    cairo_t *context = canvas.context();
    const double noseY = kHeadY + 2 + face.noseLength;
    cairo_move_to(context, kMiddle - 1, kHeadY + 4);
    cairo_line_to(context, kMiddle - 3, noseY);
    cairo_line_to(context, kMiddle + 2, noseY + 0.5);
    canvas.stroke({face.skin.red * 0.72, face.skin.green * 0.62, face.skin.blue * 0.56}, 1.2);
    const double mouthY = kHeadY + face.halfHeight * 0.62;
    cairo_move_to(context, kMiddle - face.mouthWidth, mouthY);
    cairo_curve_to(context, kMiddle - 3, mouthY + face.smile, kMiddle + 3, mouthY + face.smile,
                   kMiddle + face.mouthWidth, mouthY);
    canvas.stroke({0.70, 0.32, 0.32}, 2);
}

} // namespace

std::uint64_t textNumber(const std::string &text)
{
    // FNV-1a
    std::uint64_t number = 0xCBF29CE484222325U;
    for (const char character : text) {
        number ^= static_cast<unsigned char>(character);
        number *= 0x100000001B3U;
    }
    return number;
}

void drawPortrait(Canvas &canvas, const IdCard &card)
{
    const Face face = faceOf(card);
    cairo_rectangle(canvas.context(), 0, 0, kIdPhotoWidth, kIdPhotoHeight);
    canvas.fill({0.90, 0.94, 0.97});
    drawBackHair(canvas, face);
    drawBody(canvas, face);
    drawHead(canvas, face);
    drawTopHair(canvas, face);
    drawEyes(canvas, face);
    drawNoseAndMouth(canvas, face);
}

} // namespace drivers::cards
