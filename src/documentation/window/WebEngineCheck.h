#pragma once

#include <QString>

/// Whether the engine of the documentation pages can run here. It ends the whole process where it cannot, and
/// conversions with it, so everything that it is known to need is looked at before.
namespace webengine {

/// What speaks against it, for the log; empty: nothing. Starts nothing but a child that ends at once.
QString obstacle();

}  // namespace webengine
