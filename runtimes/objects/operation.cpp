#include "runtimes/objects/operation.h"

namespace orv::objects {

Class asyncOperationClass("IAsyncOperation");
Member putCompletedMember("IAsyncOperation", "put_Completed");
Member getResultsMember("IAsyncOperation", "GetResults");
Member getStatusMember("IAsyncInfo", "get_Status");
Member getErrorCodeMember("IAsyncInfo", "get_ErrorCode");
Member closeMember("IAsyncInfo", "Close");

}  // namespace orv::objects
