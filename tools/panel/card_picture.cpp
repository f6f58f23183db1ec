#include "tools/panel/card_picture.h"

#include "drivers/virtual/cards/id_pictures.h"
#include "tools/panel/texts.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tray_panel {

using drivers::tray::Slot;
using nlohmann::json;

namespace {

const QColor kGold(0xd9, 0xb4, 0x4a);
const QColor kPale(255, 255, 255, 200);

QImage blank()
{
    QImage image(kCardWidth, kCardHeight, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// The card's body with round corners.
void drawBody(QPainter &painter, const QColor &from, const QColor &to)
{
    QLinearGradient gradient(0, 0, kCardWidth, kCardHeight);
    gradient.setColorAt(0, from);
    gradient.setColorAt(1, to);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(0, 0, kCardWidth, kCardHeight, 22, 22);
}

/// The eight contacts, where ISO 7816-2 has them on a card of this size.
void drawChip(QPainter &painter, const QRect &place)
{
    painter.setPen(QPen(kGold.darker(170), 3));
    painter.setBrush(kGold);
    painter.drawRoundedRect(place, 10, 10);
    const int third = place.width() / 3;
    for (const int x : {place.left() + third, place.right() - third})
        painter.drawLine(x, place.top(), x, place.bottom());
    for (int row = 1; row < 4; ++row) {
        const int y = place.top() + row * place.height() / 4;
        painter.drawLine(place.left(), y, place.left() + third, y);
        painter.drawLine(place.right() - third, y, place.right(), y);
    }
}

void drawWaves(QPainter &painter, const QPoint &centre, const QColor &colour)
{
    painter.setPen(QPen(colour, 7, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    for (const int radius : {18, 34, 50})
        painter.drawArc(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius, -45 * 16, 90 * 16);
}

/// Draws one line of plain text, shortened to the card's width.
void drawLine(QPainter &painter, int y, int pixels, const QString &text)
{
    QFont font = painter.font();
    font.setPixelSize(pixels);
    painter.setFont(font);
    painter.setPen(Qt::white);
    const QString shown = painter.fontMetrics().elidedText(text.simplified(), Qt::ElideRight, kCardWidth - 56);
    painter.drawText(QRect(28, y, kCardWidth - 56, pixels + pixels / 2), Qt::AlignLeft | Qt::AlignVCenter, shown);
}

QString memberText(const json &object, const char *name)
{
    const auto member = object.find(name);
    return member != object.end() && member->is_string() ? QString::fromStdString(member->get<std::string>())
                                                         : QString();
}

/// A number in groups of four, as it is embossed.
QString grouped(const QString &digits)
{
    QString text;
    for (int i = 0; i < digits.size(); i += 4)
        text += digits.mid(i, 4) + ' ';
    return text.trimmed();
}

const json *applicationOfType(const json &card, const char *type)
{
    const auto applications = card.find("applications");
    if (applications == card.end())
        return nullptr;
    const auto found = std::find_if(applications->begin(), applications->end(),
                                    [type](const json &application) { return application.value("type", "") == type; });
    return found == applications->end() ? nullptr : &*found;
}

/// A plug-in module, broken out of its card: what goes into a PSAM slot.
void drawModule(QPainter &painter, const json &card)
{
    QPainterPath outline;
    outline.addPolygon(QPolygonF({{60, 20}, {300, 20}, {344, 64}, {344, 237}, {60, 237}, {60, 20}}));
    painter.setPen(QPen(QColor(0x88, 0x90, 0x98), 3));
    painter.setBrush(QColor(0xee, 0xf0, 0xf2));
    painter.drawPath(outline);
    drawChip(painter, QRect(112, 52, 180, 140));
    QFont font = painter.font();
    font.setPixelSize(26);
    painter.setFont(font);
    painter.setPen(Qt::black);
    painter.drawText(QRect(60, 196, 284, 38), Qt::AlignCenter,
                     painter.fontMetrics().elidedText(cardTitle(card).simplified(), Qt::ElideRight, 270));
}

void drawCpuCard(QPainter &painter, const json &card)
{
    const json *const bank = applicationOfType(card, "pboc");
    if (applicationOfType(card, "psam") != nullptr) {
        drawModule(painter, card);
        return;
    }
    if (applicationOfType(card, "ssse") != nullptr)
        drawBody(painter, QColor(0x2c, 0x7a, 0xb8), QColor(0x8c, 0xc4, 0xe0));
    else if (bank != nullptr)
        drawBody(painter, QColor(0x9c, 0x1f, 0x2e), QColor(0x4a, 0x10, 0x28));
    else
        drawBody(painter, QColor(0x3c, 0x46, 0x58), QColor(0x75, 0x82, 0x96));
    drawChip(painter, QRect(40, 80, 76, 62));
    if (card.contains("uid"))
        drawWaves(painter, QPoint(140, 111), kPale);
    drawLine(painter, 20, 26, cardTitle(card));
    if (bank == nullptr)
        return;
    drawLine(painter, 156, 25, grouped(memberText(*bank, "pan")));
    if (bank->contains("holder"))
        drawLine(painter, 204, 26, memberText(bank->at("holder"), "name"));
}

void drawMifareCard(QPainter &painter, const json &card)
{
    drawBody(painter, QColor(0x0c, 0x7c, 0x72), QColor(0x6a, 0xc0, 0x8c));
    drawWaves(painter, QPoint(300, 128), kPale);
    drawLine(painter, 20, 26, cardTitle(card));
    const auto blocks = card.find("blocks");
    if (blocks != card.end() && blocks->is_array() && !blocks->empty() && blocks->front().is_string()) {
        // The first four bytes of block 0.
        const QString uid = QString::fromStdString(blocks->front().get<std::string>()).left(8);
        drawLine(painter, 204, 28, "UID " + uid);
    }
}

/// The back of the card, where the stripe is.
void drawStripeCard(QPainter &painter, const json &card)
{
    drawBody(painter, QColor(0xb9, 0xa0, 0x78), QColor(0xe4, 0xd6, 0xb8));
    painter.fillRect(0, 30, kCardWidth, 70, QColor(0x22, 0x1c, 0x18));
    painter.fillRect(28, 120, 250, 46, QColor(0xf6, 0xf2, 0xea));
    const json tracks = card.value("tracks", json::object());
    for (int track = 1; track <= 3; ++track) {
        const bool written = !memberText(tracks, std::to_string(track).c_str()).isEmpty();
        painter.setPen(written ? QColor(0xf0, 0xe0, 0xb0) : QColor(0x60, 0x56, 0x4e));
        QFont font = painter.font();
        font.setPixelSize(20);
        painter.setFont(font);
        painter.drawText(28, 28 + 22 * track, written ? QString("%1 ▮▮▮▮▮▮▮▮▮▮").arg(track) : QString::number(track));
    }
    drawLine(painter, 196, 26, cardTitle(card));
}

QImage idPicture(const json &card)
{
    const drivers::cards::Picture picture = drivers::cards::idFront(drivers::cards::IdCard(card));
    return QImage(picture.rgb.data(), picture.width, picture.height, 3 * picture.width, QImage::Format_RGB888).copy();
}

} // namespace

QImage cardPicture(const json &card)
{
    const std::string kind = card.at("kind").get<std::string>();
    if (kind == "id")
        return idPicture(card);
    QImage image = blank();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    if (kind == "cpu")
        drawCpuCard(painter, card);
    else if (kind == "mifare")
        drawMifareCard(painter, card);
    else
        drawStripeCard(painter, card);
    return image;
}

QImage brokenCardPicture()
{
    QImage image = blank();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawBody(painter, QColor(0x70, 0x70, 0x70), QColor(0x98, 0x98, 0x98));
    painter.setPen(QPen(QColor(0xc0, 0x20, 0x20), 18, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(130, 60, 274, 197);
    painter.drawLine(274, 60, 130, 197);
    return image;
}

QImage emptySlotPicture(Slot slot)
{
    QImage image = blank();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x90, 0x98, 0xa0), 4, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(4, 4, kCardWidth - 8, kCardHeight - 8, 22, 22);
    const QColor faint(0xb0, 0xb8, 0xc0);
    if (slot == Slot::Antenna || slot == Slot::IdPlate)
        drawWaves(painter, QPoint(178, 128), faint);
    else
        painter.fillRect(72, 118, 260, 20, faint);
    return image;
}

} // namespace tray_panel
