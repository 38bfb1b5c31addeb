// Names of an operation's members, one for all its instances.
#include "runtimes/objects/operation.h"

namespace orv::objects {

Class asyncOperationClass("IAsyncOperation");
Member putCompletedMember("IAsyncOperation", "put_Completed");
Member getResultsMember("IAsyncOperation", "GetResults");

}  // namespace orv::objects
