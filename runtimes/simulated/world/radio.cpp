#include "runtimes/simulated/world/radio.h"

#include "quelvixwinlib_simulated.h"
#include "runtimes/objects/vector.h"

namespace orv::simulated {

using objects::Argument;
using objects::Call;
using objects::Make;
using objects::Member;
using objects::Ref;

namespace {

constexpr UINT64 Machine = 0;

Member setStateAsyncMember("Radio", "SetStateAsync");

}  // namespace

bool World::SwitchRadio(std::size_t index, RadioState radioState) {
    if (index >= state.radios.size()) {
        return false;
    }
    state.radios[index].state = radioState;
    state.canScan = state.SomeRadioOn();
    if (!state.canScan) {
        for (const auto& watcher : state.watchers) {
            watcher->Abort();
        }
    }
    return true;
}

HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation) {
    World& world = World::Get();
    Lock lock(worldMutex);
    const Answer answer = world.AnswerOf(Machine, OrvOperation_FindAdapter);
    const bool present = world.state.adapter;
    lock.Release();
    auto result = [present](IBluetoothAdapter** adapter) {
        return Give(adapter,
                    present ? Make<objects::AdapterObject>() : Ref<objects::AdapterObject>());
    };
    return StartOperation<BluetoothAdapter>(answer, result, operation);
}

HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) {
    World& world = World::Get();
    Lock lock(worldMutex);
    const Answer answer = world.AnswerOf(Machine, OrvOperation_FindRadios);
    std::optional<std::size_t>& listed = world.state.radiosListed;
    listed = listed.value_or(world.state.radios.size());
    const std::vector<RadioRecord> radios(
        world.state.radios.begin(),
        world.state.radios.begin() + static_cast<std::ptrdiff_t>(*listed));
    lock.Release();
    auto result = [radios](IVectorView<Radio>** view) {
        std::vector<Ref<SimulatedRadio>> items;
        items.reserve(radios.size());
        for (std::size_t i = 0; i < radios.size(); ++i) {
            items.push_back(Make<SimulatedRadio>(radios[i], i));
        }
        return Give(view, Make<objects::VectorView<Radio, SimulatedRadio>>(std::move(items)));
    };
    return StartOperation<IVectorView<Radio>>(answer, result, operation);
}

SimulatedRadio::SimulatedRadio(const RadioRecord& record, std::size_t indexOfRadio)
    : RadioObject(record.kind, record.state), index(indexOfRadio) {}

HRESULT SimulatedRadio::SetStateAsync(RadioState value,
                                      IAsyncOperation<RadioAccessStatus>** operation) {
    return Call(setStateAsyncMember, Argument::Number(static_cast<UINT64>(value)), [&] {
        World& world = World::Get();
        {
            Lock lock(worldMutex);
            world.SwitchRadio(index, value);
        }
        auto result = [](RadioAccessStatus* status) {
            *status = RadioAccessStatus::Allowed;
            return S_OK;
        };
        return StartOperation<RadioAccessStatus>(Answer(), result, operation);
    });
}

}  // namespace orv::simulated
