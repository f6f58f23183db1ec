#include "drivers/virtual/cards/canvas.h"

#include <dlfcn.h>
#include <pango/pangocairo.h>

#include <memory>
#include <stdexcept>

namespace drivers::cards {

namespace {

constexpr double kSmallestText = 7;
constexpr double kFullTurn = 2 * 3.14159265358979323846;

struct ObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Layout = std::unique_ptr<PangoLayout, ObjectRelease>;

struct FontRelease {
    void operator()(PangoFontDescription *font) const { pango_font_description_free(font); }
};
using Font = std::unique_ptr<PangoFontDescription, FontRelease>;

/// Keeps the text library (and with it all that it needs) in memory until the process ends, when what draws here has
/// been unloaded. It cannot be unloaded itself: the types it registers stay in GObject, which never goes, its helper
/// threads may still be looking for fonts, and the pixel library below it loses what it allocates at each load.
bool keepTextLibrary()
{
    return dlopen("libpangocairo-1.0.so.0", RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE) != nullptr;
}

/// From the start, since to be loaded and unloaded costs that memory already.
const bool kTextLibraryKept = keepTextLibrary();

int pangoUnits(double pixels)
{
    return static_cast<int>(pixels * PANGO_SCALE);
}

void setSize(PangoLayout *layout, PangoFontDescription *font, double size)
{
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
}

bool fits(PangoLayout *layout, const Box &box)
{
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(layout, &width, &height);
    return width <= box.width && height <= box.height;
}

void fitInto(PangoLayout *layout, PangoFontDescription *font, double size, const Box &box)
{
    setSize(layout, font, size);
    while (size > kSmallestText && !fits(layout, box)) {
        size -= 0.5;
        setSize(layout, font, size);
    }
    if (fits(layout, box))
        return;
    pango_layout_set_height(layout, pangoUnits(box.height));
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
}

void setSource(cairo_t *context, const Color &color)
{
    cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
}

} // namespace

void prepareText()
{
    // The text library has a set of fonts for each thread.
    thread_local bool prepared = false;
    if (prepared)
        return;
    const Box box{0, 0, 200, 30};
    Canvas canvas(200, 30);
    for (const bool bold : {false, true}) {
        TextStyle style;
        style.bold = bold;
        canvas.text("证件 Card 0", box, style);
    }
    prepared = true;
}

Canvas::Canvas(int width, int height)
    : m_surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)), m_context(cairo_create(m_surface))
{
    if (cairo_status(m_context) != CAIRO_STATUS_SUCCESS) {
        cairo_destroy(m_context);
        cairo_surface_destroy(m_surface);
        throw std::runtime_error("no surface to draw the picture on");
    }
    setSource(m_context, {1, 1, 1});
    cairo_paint(m_context);
}

Canvas::~Canvas()
{
    cairo_destroy(m_context);
    cairo_surface_destroy(m_surface);
}

void Canvas::fill(const Color &color)
{
    setSource(m_context, color);
    cairo_fill(m_context);
}

void Canvas::stroke(const Color &color, double width)
{
    setSource(m_context, color);
    cairo_set_line_width(m_context, width);
    cairo_stroke(m_context);
}

void Canvas::ellipse(double centerX, double centerY, double radiusX, double radiusY)
{
    cairo_save(m_context);
    cairo_translate(m_context, centerX, centerY);
    cairo_scale(m_context, radiusX, radiusY);
    cairo_new_sub_path(m_context);
    cairo_arc(m_context, 0, 0, 1, 0, kFullTurn);
    cairo_close_path(m_context);
    cairo_restore(m_context);
}

void Canvas::text(const std::string &text, const Box &box, const TextStyle &style)
{
    if (!kTextLibraryKept)
        throw std::runtime_error("the text library cannot be kept in memory");
    const Layout layout(pango_cairo_create_layout(m_context));
    const Font font(pango_font_description_from_string("Noto Sans CJK SC, sans-serif"));
    pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_width(layout.get(), pangoUnits(box.width));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_alignment(layout.get(), style.centered ? PANGO_ALIGN_CENTER : PANGO_ALIGN_LEFT);
    fitInto(layout.get(), font.get(), style.size, box);
    cairo_save(m_context);
    cairo_rectangle(m_context, box.x, box.y, box.width, box.height);
    cairo_clip(m_context);
    setSource(m_context, style.color);
    cairo_move_to(m_context, box.x, box.y);
    pango_cairo_show_layout(m_context, layout.get());
    cairo_restore(m_context);
    cairo_new_path(m_context);
}

void Canvas::paste(const Canvas &other, double x, double y)
{
    cairo_set_source_surface(m_context, other.m_surface, x, y);
    cairo_paint(m_context);
}

Picture Canvas::picture() const
{
    cairo_surface_flush(m_surface);
    Picture picture;
    picture.width = cairo_image_surface_get_width(m_surface);
    picture.height = cairo_image_surface_get_height(m_surface);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(m_surface));
    const unsigned char *rows = cairo_image_surface_get_data(m_surface);
    picture.rgb.reserve(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height) * 3);
    for (std::size_t y = 0; y < static_cast<std::size_t>(picture.height); ++y) {
        for (std::size_t x = 0; x < static_cast<std::size_t>(picture.width); ++x) {
            // A pixel is a 32-bit word in the machine's byte order.
            const std::uint32_t pixel = *reinterpret_cast<const std::uint32_t *>(rows + y * stride + x * 4);
            for (const unsigned shift : {16U, 8U, 0U})
                picture.rgb.push_back(static_cast<std::uint8_t>(pixel >> shift));
        }
    }
    return picture;
}

} // namespace drivers::cards
