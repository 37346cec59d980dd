#pragma once

#include <TessaronClassesUI/KRDelegateView.h>

namespace Tessaron
{

/// A view with a white ground. On the main thread.
class TESSARON_EXPORT WhiteView : public KRDelegateView
{
    Q_OBJECT

public:
    explicit WhiteView(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Tessaron
