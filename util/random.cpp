#include "vaskel/util.h"

namespace Vaskel {

int noiseed = 1234567;

}  // namespace Vaskel
