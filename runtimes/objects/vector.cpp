// Names of a vector's members, one for all its instances.
#include "runtimes/objects/vector.h"

namespace orv::objects {

Class vectorViewClass("IVectorView");
Member vectorViewGetAt("IVectorView", "GetAt");
Member vectorViewGetSize("IVectorView", "get_Size");
Class vectorClass("IVector");
Member vectorGetAt("IVector", "GetAt");
Member vectorGetSize("IVector", "get_Size");

}  // namespace orv::objects
