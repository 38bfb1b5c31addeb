// A host in Node: scans, connects to ORV-0042, sends it 64 KiB and compares the echo.
// Usage: node node_host.js LIBRARY
const koffi = require('koffi');

const Total = 65536, Block = 244, AddressOf0042 = 0xA0B1C2D3E4F5n;

const Device = koffi.struct('DiscoveredDevice', {
    address: 'uint64_t',
    name: koffi.array('char', 30),
    rssi: 'int16_t',
    value0500: 'uint8_t',
    value1130: 'uint8_t',
    data1118: koffi.array('uint8_t', 16),
    padding: koffi.array('uint8_t', 6),
});
const library = koffi.load(process.argv[2]);
const available = library.func('int32_t BluetoothAvailable()');
const initialize = library.func('int32_t OrvScanner_Initialize()');
const start = library.func('int32_t OrvScanner_Start(int32_t)');
const stop = library.func('int32_t OrvScanner_Stop(int32_t)');
const count = library.func('int32_t OrvScanner_GetDeviceCount(int32_t)');
const info = library.func(
    'int32_t OrvScanner_GetDeviceInfo(int32_t, int32_t, _Out_ DiscoveredDevice*)');
const deinitialize = library.func('int32_t OrvScanner_Deinitialize(int32_t)');
const connect = library.func('int32_t OrvDevice_Connect(uint64_t)');
const send = library.func('int32_t OrvDevice_Send(uint64_t, int32_t, const uint8_t*)');
const receive = library.func('int32_t OrvDevice_Receive(uint64_t, int32_t, _Out_ uint8_t*)');
const disconnect = library.func('int32_t OrvDevice_Disconnect(uint64_t)');

function check(step, isRight) {
    console.log(`${isRight ? 'ok' : 'FAILED'}: ${step}`);
    if (!isRight) process.exit(1);
}

const pause = (ms) => new Promise((resume) => setTimeout(resume, ms));

// Repeats `ask` until it returns a result, for at most 10 s.
async function until(ask) {
    for (let i = 0; i < 200; ++i) {
        const answer = ask();
        if (answer !== undefined) return answer;
        await pause(50);
    }
}

async function main() {
    check('a radio is on', available() === 0);
    const scanner = initialize();
    check('the scan starts', scanner >= 0 && start(scanner) === 0);
    const heard = await until(() => {
        for (let i = 0; i < count(scanner); ++i) {
            const device = {};
            if (info(scanner, i, device) !== 0) continue;
            // The values are 0xFF until the scan response arrives.
            const isIt = BigInt(device.address) === AddressOf0042;
            if (isIt && device.value0500 !== 0xFF) return device;
        }
    });
    check('ORV-0042 is heard with its values', heard !== undefined && heard.value0500 === 0x64 &&
        heard.value1130 === 0x01 && Buffer.from(heard.data1118).toString() === 'ORV-0042-SERIAL1');
    check('the scan stops', stop(scanner) === 0 && deinitialize(scanner) === 0);

    check('the link opens', connect(AddressOf0042) === 0);
    const data = Buffer.from(Array.from({ length: Total }, (_, i) => (i * 167 + (i >> 8)) & 0xFF));
    for (let at = 0; at < Total; at += Block) {
        const block = data.subarray(at, at + Block);
        const sent = send(AddressOf0042, block.length, block);
        if (sent !== block.length) check(`the block at ${at} is sent`, false);
    }
    const echo = Buffer.alloc(Total + 1);
    let received = 0;
    await until(() => {
        const part = Buffer.alloc(Total + 1 - received);
        const taken = receive(AddressOf0042, part.length, part);
        part.copy(echo, received, 0, Math.max(taken, 0));
        received += taken;
        return taken < 0 || received >= Total ? received : undefined;
    });
    check('the echo is what was sent', received === Total && data.equals(echo.subarray(0, Total)));
    check('the link is closed', disconnect(AddressOf0042) === 0);
    console.log(`done: ${Total} bytes to ORV-0042 and back, unchanged`);
}

main();
