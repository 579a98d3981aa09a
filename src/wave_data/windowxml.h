#pragma once

#include "layoutnode.h"
#include "signalelement.h"

#include <QDomElement>
#include <QList>
#include <QPair>
#include <QString>

#include <functional>
#include <memory>

class QDomDocument;

namespace WaveMonitor {

// The elements of a window's XML form, see WindowContents, one by one: for the readers and writers
// that keep the samples out of a document tree, where they would take nine times their size.

/// Names and values, in the order in which files have them. The values hold nothing that XML can't.
using Attributes = QList<QPair<QString, QString>>;
/// Those of an element `Signal`; its samples are its text.
[[nodiscard]] Attributes signalAttributes(const SignalElement &signal);
/// Those of an element `Node`. \a row is a signal or a bus, not the root.
[[nodiscard]] Attributes rowAttributes(const LayoutNode &row);
/// An element with them, attached to nothing.
[[nodiscard]] QDomElement newElement(QDomDocument &document, const QString &tag,
                                     const Attributes &attributes);

/// Gives the text of an attribute of the element at hand; empty if it is absent.
using AttributeReader = std::function<QString(const QString &name)>;
[[nodiscard]] AttributeReader attributesOf(const QDomElement &element);

/// Reads an element `Signal`, without samples.
[[nodiscard]] SignalElement readSignalTag(const AttributeReader &attribute);
/// The row of an element `Node` that stands directly in `Layout`, members not included; null for a
/// type that is neither a signal nor a bus.
[[nodiscard]] std::unique_ptr<LayoutNode> readRowTag(const AttributeReader &attribute);
/// The row of an element `Node` within a bus: a signal, whatever type it claims to have.
[[nodiscard]] std::unique_ptr<LayoutNode> readMemberTag(const AttributeReader &attribute);

} // namespace WaveMonitor
