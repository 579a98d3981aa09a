#pragma once

namespace KEO {

/// What the bytes of a description for standard cores stand for. Every byte survives a load and a
/// save in the same encoding: Latin-1 knows them all, and UTF-8 is taken only where the bytes are
/// that throughout.
enum class DescriptionEncoding { Latin1, Utf8 };

} // namespace KEO
