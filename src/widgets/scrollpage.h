#pragma once

class QWidget;

namespace KEO {

/// A page with \a content in it, which scrolls where the page is too small for it and fills the
/// page otherwise. What is inserted at the top of the page's vertical layout stays in sight. The
/// page owns the content; the caller owns the page. The wheel scrolls and changes a number or a
/// choice only where the user has put the focus.
[[nodiscard]] QWidget *makeScrollPage(QWidget *content);

/// Pixels above what such a page shows.
[[nodiscard]] int scrollPlaceOf(const QWidget &page);
/// Goes there, once the page has its layout.
void setScrollPlace(const QWidget &page, int place);

} // namespace KEO
