#include "runtimes/objects/vector.h"

namespace orv::objects {

Class vectorViewClass("IVectorView");
Member vectorViewGetAt("IVectorView", "GetAt");
Member vectorViewGetSize("IVectorView", "get_Size");
Class iteratorClass("IIterator");
Member iterableFirst("IIterable", "First");
Member iteratorGetCurrent("IIterator", "get_Current");
Member iteratorGetHasCurrent("IIterator", "get_HasCurrent");
Member iteratorMoveNext("IIterator", "MoveNext");
Class vectorClass("IVector");
Member vectorGetAt("IVector", "GetAt");
Member vectorGetSize("IVector", "get_Size");

}  // namespace orv::objects
