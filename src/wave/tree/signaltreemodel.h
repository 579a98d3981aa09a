#pragma once

#include "rowmodel.h"

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>
#include <wave/view/waveview.h>
#include <wave/view/waveviewdatasource.h>

#include <QBitArray>
#include <QList>
#include <QMap>
#include <QPointer>

#include <vector>

class QDomDocument;
class QDomElement;

namespace WaveMonitor {

class SignalTreeView;

/// The centre of a viewer: owns what the viewer shows and serves it to the tree view, as the model
/// of its rows, and to the wave view, as its data source. Everything the user does to rows ends
/// here, and the rest of the viewer hears of it by notifications.
class SignalTreeModel final : public RowModel, public Localized, public WaveView::DataSourceProtocol
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
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
    [[nodiscard]] QDomElement writeWindow(QDomDocument &document) const;
    /// Replaces the rows by those of an element `Layout`.
    void setLayout(const QDomElement &layout);
    /// What Show All brings back; after setLayout, which shows none of it.
    void setHiddenRows(const std::vector<HiddenRow> &rows) { m_contents.setHiddenRows(rows); }
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

    /// The sample whose values stand beside the names, until a marker moves.
    void showValuesAt(int sample);
    /// The view that shows the model, asked which buses are expanded. Borrowed; may be null.
    void setView(SignalTreeView *view);
    /// Groups the rows and clears the selection of the wave view.
    void groupBus(const QModelIndexList &indexes);
    /// Copies the rows' colours to their wave items.
    void refreshItemColors();
    /// Shows the rows' selection in the wave view.
    void itemSelectionChanged(const QModelIndexList &selected, const QModelIndexList &deselected);

    Q_INVOKABLE void handleEvents(Notification *e);

    // The wave view's data source.
    QList<QGraphicsItem *> waveItems() override;
    void relayoutItems() override;
    int triggerPosition() override { return m_contents.triggerPosition(); }
    void itemPressed(QGraphicsItem *item) override;
    QList<const LayoutNode *> shownRows() override;
    /// The row of an item, or null.
    [[nodiscard]] const LayoutNode *rowOf(const QGraphicsItem *item) const;

Q_SIGNALS:
    /// Rows were added or loaded from outside: what was done to rows before means nothing now.
    void rowsReplaced();

private:
    QList<QGraphicsItem *> recalculateWaveItems();
    void showMarkerSample(const QObject &ruler);
    void updateViewport();

    WaveViewDataSource m_items;
    DataFormat::Type m_format = DataFormat::Hexadecimal; ///< default radix of the viewer
    QPointer<SignalTreeView> m_view;
};

} // namespace WaveMonitor
