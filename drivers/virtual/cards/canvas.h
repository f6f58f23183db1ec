// A drawing surface for the card pictures.
#pragma once

#include "drivers/virtual/cards/picture.h"

#include <cairo.h>

#include <string>

namespace drivers::cards {

struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};

struct Box {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

struct TextStyle {
    double size = 14; ///< pixels; made smaller where the text would not fit its box
    Color color;
    bool bold = false;
    bool centered = false;
};

/// Loads the fonts that text() uses in this thread, if it has not. Throws as text() does.
void prepareText();

class Canvas {
public:
    /// White. Throws std::runtime_error if there is no memory for it.
    Canvas(int width, int height);
    ~Canvas();
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;

    /// For paths and transformations; owned by the canvas.
    cairo_t *context() { return m_context; }

    void fill(const Color &color);
    void stroke(const Color &color, double width);
    void ellipse(double centerX, double centerY, double radiusX, double radiusY);

    /// Draws plain text (nothing in it is markup) from the top left of the box, broken into lines as needed, and never
    /// outside the box: it is made smaller first, and ends in an ellipsis if even the smallest size is too large.
    /// Throws std::runtime_error if the text library is not the shared one.
    void text(const std::string &text, const Box &box, const TextStyle &style);

    /// Copies another canvas here, its top left corner at x, y.
    void paste(const Canvas &other, double x, double y);

    Picture picture() const;

private:
    cairo_surface_t *m_surface;
    cairo_t *m_context;
};

} // namespace drivers::cards
