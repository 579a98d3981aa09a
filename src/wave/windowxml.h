#pragma once

#include "layoutnode.h"
#include "signalelement.h"

#include <QDomElement>
#include <QString>

#include <functional>
#include <memory>

class QDomDocument;

namespace WaveMonitor {

// The elements of a window's XML form, see WindowContents, one by one: for the readers and writers
// that keep the samples out of a document tree, where they would take nine times their size.

/// Gives the text of an attribute of the element at hand; empty if it is absent.
using AttributeReader = std::function<QString(const QString &name)>;
[[nodiscard]] AttributeReader attributesOf(const QDomElement &element);

/// Element `Signal` without its samples, attached to nothing.
[[nodiscard]] QDomElement writeSignalTag(QDomDocument &document, const SignalElement &signal);
/// Reads it back, without samples.
[[nodiscard]] SignalElement readSignalTag(const AttributeReader &attribute);

/// The row of an element `Node` that stands directly in `Layout`, members not included; null for a
/// type that is neither a signal nor a bus.
[[nodiscard]] std::unique_ptr<LayoutNode> readRowTag(const AttributeReader &attribute);
/// The row of an element `Node` within a bus: a signal, whatever type it claims to have.
[[nodiscard]] std::unique_ptr<LayoutNode> readMemberTag(const AttributeReader &attribute);

} // namespace WaveMonitor
