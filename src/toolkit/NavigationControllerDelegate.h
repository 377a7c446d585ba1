#pragma once

#include <memory>

namespace vl {

class NavigationController;
class ViewController;

// Told about the transitions of a navigation controller's stack (push, pop or replacement).
class NavigationControllerDelegate {
public:
    virtual ~NavigationControllerDelegate() = default;
    virtual void navigationControllerWillShowViewController(
        const std::shared_ptr<NavigationController>& /*navigationController*/,
        const std::shared_ptr<ViewController>& /*viewController*/, bool /*animated*/) {}
    // After the transition ended, with the controller now on top.
    virtual void navigationControllerDidShowViewController(
        const std::shared_ptr<NavigationController>& navigationController,
        const std::shared_ptr<ViewController>& viewController, bool animated) = 0;
};

}  // namespace vl
