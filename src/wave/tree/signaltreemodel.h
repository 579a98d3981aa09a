#pragma once

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>
#include <wave/view/waveview.h>
#include <wave/view/waveviewdatasource.h>
#include <wave_data/windowcontents.h>

#include <QAbstractItemModel>
#include <QBitArray>
#include <QList>
#include <QMap>
#include <QPointer>

class QDomDocument;
class QDomElement;

namespace WaveMonitor {

class SignalTreeView;

/// The centre of a viewer: owns what the viewer shows and serves it to the tree view (as an item
/// model with the columns Name and Value) and to the wave view (as its data source). Everything the
/// user does to rows ends here, and the rest of the viewer hears of it by notifications.
///
/// An index points at its row's LayoutNode. Nothing here fails loudly: what cannot be done is left
/// undone, with the reason in the debug log.
class SignalTreeModel final : public QAbstractItemModel,
                              public Localized,
                              public WaveView::DataSourceProtocol
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
    enum Column : int { NameColumn = 0, ValueColumn = 1 };

    explicit SignalTreeModel(QObject *parent = nullptr);
    ~SignalTreeModel() override;

    /// Appends a row; a signal with an id that is known already replaces that one's samples.
    void addSignal(const SignalElement &signal);
    void addBus(const BusElement &bus);
    /// Sample index. Also shown in the Value column until a marker takes over.
    void setTriggerPosition(int sample);
    /// The XML forms are told at WindowContents. Replaces signals and rows by those of an element
    /// `Window`; any other element changes nothing. Always true.
    bool readWindow(const QDomElement &window);
    /// Replaces signals, rows and trigger.
    void setContents(WindowContents contents);
    /// All that is shown. Borrowed; changes with it.
    [[nodiscard]] const WindowContents &contents() const { return m_contents; }
    [[nodiscard]] QDomElement writeWindow(QDomDocument &document) const;
    /// Replaces the rows by those of an element `Layout`.
    void setLayout(const QDomElement &layout);
    [[nodiscard]] QDomElement writeLayout(QDomDocument &document) const;
    /// New samples for the signals with ids 0, 1, ...; rows, names and colours stay. Nothing
    /// happens unless there are as many arrays as signals.
    void updateData(const QList<QBitArray> &data);
    /// DataFormat::Type, kept with the window; no row's value uses it. Hexadecimal for any number
    /// that is no type.
    void setDefaultFormat(int format);
    [[nodiscard]] int defaultFormat() const { return m_format; }
    /// Samples of the longest signal.
    [[nodiscard]] int maxDataLength() const { return int(m_contents.maxDataLength()); }
    /// By id; shares the samples.
    [[nodiscard]] QMap<int, SignalElement> signalMap() const { return m_contents.signalMap(); }

    /// The view that shows the model, asked which buses are expanded. Borrowed; may be null.
    void setView(SignalTreeView *view);
    /// The row of \a index; the root for an invalid index.
    [[nodiscard]] LayoutNode *node(const QModelIndex &index) const;

    /// Makes one bus of top-level rows given in row order, at the first one's row; buses among them
    /// give their members and vanish. All signals must have the same number of samples.
    void groupBus(const QModelIndexList &indexes);
    /// Puts the members of a bus into its place.
    void ungroupBus(const QModelIndex &index);
    void restoreOriginalName(const QModelIndex &index);
    /// Turns the member order of a bus round, so that its values read mirrored.
    void reverse(const QModelIndex &bus);
    /// Copies the rows' colours to their wave items.
    void refreshItemColors();
    /// Shows the rows' selection in the wave view.
    void itemSelectionChanged(const QModelIndexList &selected, const QModelIndexList &deselected);

    /// These four put the rows \a moved, in list order, before or after \a target, or first or last
    /// under \a parent (invalid for the top level), and return their new indexes. The first two
    /// also dissolve a bus that they leave without members. A bus never goes into a bus: then
    /// nothing moves and the result is empty.
    QModelIndexList moveAbove(const QModelIndex &target, const QModelIndexList &moved);
    QModelIndexList moveBelow(const QModelIndex &target, const QModelIndexList &moved);
    QModelIndexList movePrepend(const QModelIndex &parent, const QModelIndexList &moved);
    QModelIndexList moveAppend(const QModelIndex &parent, const QModelIndexList &moved);

    Q_INVOKABLE void handleEvents(Notification *e);

    // The item model. Column 1 can be neither selected nor edited.
    [[nodiscard]] QModelIndex index(int row, int column,
                                    const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &index) const override;
    using QObject::parent;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override;
    [[nodiscard]] Qt::DropActions supportedDragActions() const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

    // The wave view's data source.
    QList<QGraphicsItem *> waveItems() override;
    void relayoutItems() override;
    int triggerPosition() override { return m_contents.triggerPosition(); }
    void itemPressed(QGraphicsItem *item) override;

private:
    enum class EmptyBus { Keep, Dissolve };

    [[nodiscard]] QModelIndex indexOf(const LayoutNode *node) const;
    [[nodiscard]] QList<LayoutNode *> nodesOf(const QModelIndexList &indexes) const;
    QList<QGraphicsItem *> recalculateWaveItems();
    [[nodiscard]] QString groupingObstacle(const QList<const LayoutNode *> &nodes) const;
    void groupNodes(const QList<const LayoutNode *> &nodes);
    LayoutNode::List takeRows(int first, int last);
    QModelIndexList moveBefore(LayoutNode *anchor, LayoutNode *parent, const QModelIndexList &moved,
                               EmptyBus emptyBus);
    void moveNode(LayoutNode *node, LayoutNode *parent, const LayoutNode *anchor);
    void showMarkerSample(const QObject &ruler);
    void updateViewport();

    WindowContents m_contents;
    WaveViewDataSource m_items;
    DataFormat::Type m_format = DataFormat::Hexadecimal; ///< default radix of the viewer
    QPointer<SignalTreeView> m_view;
};

} // namespace WaveMonitor
