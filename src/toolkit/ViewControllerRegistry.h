#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace vl {

class ViewController;

// View controller classes looked up by name at run time, so that code can ask for a controller
// that a given build may not carry and fall back when it is missing. The toolkit's own
// replaceable controllers are registered on first use. Thread-safe.
class ViewControllerRegistry {
public:
    using Factory = std::function<std::shared_ptr<ViewController>()>;

    static void registerClass(const QString& name, Factory factory);
    static void unregisterClass(const QString& name);
    static bool hasClass(const QString& name);
    static QStringList classNames();
    // A new controller of the named class made with its plain initialiser; null when the class
    // is unknown or its factory made nothing.
    static std::shared_ptr<ViewController> createInstance(const QString& name);
};

}  // namespace vl
