#include "drivers/virtual/cards/id_composite.h"

#include "drivers/virtual/cards/id_portrait.h"

#include <cmath>
#include <vector>

namespace drivers::cards {

namespace {

constexpr Color kLabelColor{0.13, 0.38, 0.62};
constexpr Color kValueColor{0.08, 0.08, 0.10};
constexpr Color kTitleColor{0.45, 0.08, 0.10};
constexpr Box kPhotoBox{286, 38, kIdPhotoWidth, kIdPhotoHeight};
constexpr double kMargin = 18;
constexpr double kBottomRowY = 208;

/// One line of a card: a label and its value.
struct Row {
    std::string label;
    std::string value;
    double height = 28;
};

/// "19900307" as "1990.03.07"; anything else, such as an expiry "长期", as it is.
std::string printedDate(const std::string &date)
{
    if (date.size() != 8 || date.find_first_not_of("0123456789") != std::string::npos)
        return date;
    return date.substr(0, 4) + "." + date.substr(4, 2) + "." + date.substr(6, 2);
}

std::string validity(const IdCard &card)
{
    return printedDate(card.field("from")) + " - " + printedDate(card.field("until"));
}

bool isForeign(const IdCard &card)
{
    return card.letter() == 'I' || card.letter() == 'Y';
}

std::vector<Row> frontRows(const IdCard &card)
{
    const auto text = [&card](const char *name) { return card.field(name); };
    const std::string birth = printedDate(text("birth"));
    if (card.letter() == 'I')
        return {{"姓名 Name", text("englishName"), 40},
                {"中文姓名", text("chineseName")},
                {"性别 Sex", text("sex")},
                {"国籍 Nat.", text("nationality")},
                {"出生 Birth", birth}};
    if (card.letter() == 'Y')
        return {{"姓名", text("name")},
                {"Name", text("englishName"), 40},
                {"性别 Sex", text("sex")},
                {"国籍 Nat.", text("nationality")},
                {"出生 Birth", birth}};
    std::vector<Row> rows{
        {"姓名", text("name")}, {"性别", text("sex")}, {"出生", birth}, {"住址", text("address"), 66}};
    if (card.letter() == 'A')
        rows.insert(rows.begin() + 2, {"民族", text("ethnicity")});
    return rows;
}

std::vector<Row> backRows(const IdCard &card)
{
    const std::string authority = card.field("authority");
    std::vector<Row> rows{{"签发机关", authority.empty() ? "国家移民管理局" : authority}, {"有效期限", validity(card)}};
    if (card.letter() == 'J')
        rows.push_back({"通行证号码", card.field("permitNumber")});
    if (card.letter() == 'Y')
        rows.push_back({"旧证件号码", card.field("formerNumber")});
    return rows;
}

std::string titleOf(const IdCard &card)
{
    switch (card.letter()) {
    case 'I':
    case 'Y':
        return "外国人永久居留身份证";
    case 'J':
        return "港澳台居民居住证";
    case 'A':
        return "居民身份证";
    default:
        return "身份证件";
    }
}

/// Fine waves whose course follows the card's text, as the ground of the print.
void drawGround(Canvas &canvas, const IdCard &card, const Color &paper, const Color &line)
{
    cairo_t *context = canvas.context();
    cairo_rectangle(context, 0, 0, kIdCompositeWidth, kIdCompositeHeight);
    canvas.fill(paper);
    const std::uint64_t number = textNumber(card.info(kIdOptionText, '|'));
    const double phase = static_cast<double>(number % 6283U) / 1000;
    const double length = 24 + static_cast<double>(number / 6283U % 4096U) / 128;
    for (int y = -12; y < kIdCompositeHeight + 12; y += 9) {
        cairo_move_to(context, 0, y);
        for (int x = 0; x <= kIdCompositeWidth; x += 4)
            cairo_line_to(context, x, y + 9 * std::sin(x / length + phase + y / 31.0));
        canvas.stroke(line, 0.7);
    }
    cairo_rectangle(context, 0.5, 0.5, kIdCompositeWidth - 1, kIdCompositeHeight - 1);
    canvas.stroke({0.55, 0.6, 0.66}, 1);
}

constexpr double kLabelSize = 12;

void drawRow(Canvas &canvas, const Row &row, const Box &labelBox, double valueWidth, double valueSize)
{
    // The smaller label is let down to the value's base line.
    const double drop = valueSize - kLabelSize;
    canvas.text(row.label, {labelBox.x, labelBox.y + drop, labelBox.width, labelBox.height - drop},
                {kLabelSize, kLabelColor});
    canvas.text(row.value, {labelBox.x + labelBox.width, labelBox.y, valueWidth, labelBox.height},
                {valueSize, kValueColor});
}

void drawRows(Canvas &canvas, const std::vector<Row> &rows, double y, double labelWidth, double right)
{
    for (const Row &row : rows) {
        drawRow(canvas, row, {kMargin, y, labelWidth, row.height}, right - kMargin - labelWidth, 15);
        y += row.height;
    }
}

/// A rosette of the project's own in place of an emblem: the cards are samples.
void drawRosette(Canvas &canvas, double centerX, double centerY)
{
    cairo_t *context = canvas.context();
    for (int petal = 0; petal < 12; ++petal) {
        cairo_save(context);
        cairo_translate(context, centerX, centerY);
        cairo_rotate(context, petal * 3.14159265358979323846 / 6);
        canvas.ellipse(0, -15, 5, 13);
        cairo_restore(context);
        canvas.stroke({0.70, 0.16, 0.18, 0.8}, 1.2);
    }
    canvas.ellipse(centerX, centerY, 6, 6);
    canvas.fill({0.70, 0.16, 0.18, 0.8});
}

void drawSampleMark(Canvas &canvas)
{
    canvas.text("样本 SAMPLE", {kIdCompositeWidth - 98, 10, 86, 20}, {12, {0.72, 0.12, 0.14, 0.75}, true, true});
}

} // namespace

void drawIdFront(Canvas &canvas, const IdCard &card)
{
    drawGround(canvas, card, {0.93, 0.96, 0.98}, {0.62, 0.75, 0.86, 0.55});
    const bool foreign = isForeign(card);
    drawRows(canvas, frontRows(card), foreign ? 36 : 24, foreign ? 68 : 40, kPhotoBox.x - 8);
    if (foreign)
        canvas.text(titleOf(card), {kMargin, 10, 250, 24}, {14, kTitleColor, true});
    const Row number{foreign ? "证件号码" : "公民身份号码", card.field("number")};
    drawRow(canvas, number, {kMargin, kBottomRowY, 84, 30}, kIdCompositeWidth - 2 * kMargin - 84, 19);
    Canvas photo(kIdPhotoWidth, kIdPhotoHeight);
    drawPortrait(photo, card);
    canvas.paste(photo, kPhotoBox.x, kPhotoBox.y);
    drawSampleMark(canvas);
}

void drawIdBack(Canvas &canvas, const IdCard &card)
{
    drawGround(canvas, card, {0.98, 0.94, 0.92}, {0.88, 0.70, 0.66, 0.5});
    drawRosette(canvas, 56, 58);
    canvas.text("中华人民共和国", {96, 34, 292, 32}, {20, kTitleColor, true, true});
    canvas.text(titleOf(card), {96, 68, 292, 40}, {24, kTitleColor, true, true});
    const std::vector<Row> rows = backRows(card);
    drawRows(canvas, rows, 236 - 28.0 * static_cast<double>(rows.size()), 84, kIdCompositeWidth - kMargin);
    drawSampleMark(canvas);
}

} // namespace drivers::cards
