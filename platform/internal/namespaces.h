#pragma once

// A folder keeps its internal names in a namespace of its own name, and sees those of the folders below it: a
// using-directive reaches what the named namespace sees in its turn. The internal headers of platform/, math/ and data/
// include this one, directly or through another, so whoever uses a name of theirs sees all of them.
// `tools/check_layers` compares with the layers. door/ stands on everything and names the folder with each name.
namespace korvale {

namespace platform {
}

namespace math {
using namespace platform;
}

namespace data {
using namespace math;
}

namespace path {
using namespace data;
}

namespace equation {
using namespace data;
}

namespace preserve {
using namespace data;
}

namespace ray {
using namespace data;
}

namespace exchange {
using namespace data;
}

namespace frame {
using namespace platform;
}

namespace border {
using namespace path;
}

} // namespace korvale
