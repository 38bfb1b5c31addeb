#include "tests/reliability/model/model.h"

namespace orv::model {

Model::Model() {
    OrvWorld_Reset(1);
    OrvWorld_SetAdapter(1);
    OrvWorld_AddRadio(reference.radioKind, reference.radioState);
    for (std::size_t i = 0; i < reference.devices.size(); ++i) {
        OrvWorld_AddDevice(Addresses[i], "ORV-1");
        reference.devices[i].packets[0].name = u"ORV-1";
    }
    Run({SwitchLog, 1, 0, {}});
}

Model::~Model() {
    OrvWorld_Reset(1);  // ends all faults and hangs
    for (ResultCode id = OrvScanner_Initialize(); id >= 0; --id) {
        OrvScanner_Deinitialize(id);
    }
    for (const BluetoothAddress address : Addresses) {
        while (OrvDevice_Disconnect(address) == 0) {
        }
    }
    Settle();
    Logging_Disable();
}

void Model::Finish() {
    Run({Break, 0, 0, {}});
    for (std::uint8_t i = 0; i < 5; ++i) {
        Run({CountDevices, i, 0, {}});
        for (std::uint8_t index = 1; index < 4; ++index) {
            Run({ReadDevice, i, index, {}});
        }
        Run({Flush, i, 0, {}});
        Run({Arrange, static_cast<std::uint8_t>(OrvOperation_WriteDescriptor * 4 + i), 0, {}});
        while (reference.FindLink(i % Addresses.size())) {
            Run({Disconnect, i, 0, {}});
        }
    }
    while (!reference.sessions.empty()) {
        ResultCode id = reference.sessions.back().id;
        CheckEqual("removal", OrvScanner_Deinitialize(id), 0);
        reference.sessions.pop_back();
    }
    OrvWorld_PassTime(5000);
    Settle();
    CheckEqual("held objects", OrvWorld_HeldObjects(), 0);
    CheckEqual("held references", OrvWorld_HeldReferences(), 0);
    CheckEqual("unexpected calls", OrvWorld_UnexpectedCallCount(), 0);
}

}  // namespace orv::model
