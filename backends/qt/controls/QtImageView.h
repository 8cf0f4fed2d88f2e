#pragma once

#include <memory>
#include <utility>
#include <vector>

#include <QPointer>
#include <QWidget>

#include "backends/qt/controls/PictureWidget.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSView.h"

namespace vistrane {

class MediaPreviewLayer;

/// The layer of a view. Its background is the widget's. Of its sublayers, only a camera's live
/// preview is shown, filling the widget. Requests pictures only while it is visible.
class QtLayer final : public CALayer {
public:
    explicit QtLayer(PictureWidget& place);
    ~QtLayer() override;

    void setFrame(CGRect) override {}
    void setBackgroundColor(CGColor color) override;
    void addSublayer(std::shared_ptr<CALayer> layer) override;

private:
    void showPreview(bool isSeen);

    QPointer<PictureWidget> place_;
    std::vector<std::shared_ptr<CALayer>> sublayers_;
    std::shared_ptr<MediaPreviewLayer> preview_;
};

/// A view on a widget that outlives it. Also used for views without a picture.
class QtImageView final : public NSImageView {
public:
    explicit QtImageView(PictureWidget& place) : place_(place) {}

    NSRect bounds() const override;
    void setWantsLayer(bool wanted) override;
    std::shared_ptr<CALayer> layer() override { return layer_; }
    void setNeedsDisplay(bool needed) override;
    void setImage(std::shared_ptr<NSImage> image) override;

    /// The widget, for an alert that borrows the view.
    PictureWidget& widget() const { return place_; }

private:
    PictureWidget& place_;
    std::shared_ptr<QtLayer> layer_;
};

/// The widget of a view from an interface file; null for any other view.
QWidget* widgetOf(NSView& view);

} // namespace vistrane
