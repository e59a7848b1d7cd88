// A signal of Qt's.
#pragma once

#include <QtCore/QObject>

namespace korva::bench {

/// Tells of a value; keeps none.
class QtValue : public QObject {
    Q_OBJECT

Q_SIGNALS:
    void changed(quint32 value);
};

}  // namespace korva::bench
