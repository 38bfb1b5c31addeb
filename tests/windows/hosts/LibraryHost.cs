using System.Runtime.InteropServices;
using System.Text;
using static Hosts.Exchange;

namespace Hosts;

/// <summary>A typical .NET host: declares the exports and calls them.</summary>
internal static unsafe class LibraryHost
{
    private const string Library = "quelvixwinlib";

    [StructLayout(LayoutKind.Sequential)]
    private struct DiscoveredDevice
    {
        public ulong Address;
        public fixed byte Name[30];
        public short Rssi;
        public byte Value0500;
        public byte Value1130;
        public fixed byte Data1118[16];
        public fixed byte Padding[6];
    }

    [DllImport(Library)]
    private static extern int BluetoothAvailable();

    [DllImport(Library)]
    private static extern int OrvScanner_Initialize();

    [DllImport(Library)]
    private static extern int OrvScanner_Deinitialize(int scanner);

    [DllImport(Library)]
    private static extern int OrvScanner_Start(int scanner);

    [DllImport(Library)]
    private static extern int OrvScanner_Stop(int scanner);

    [DllImport(Library)]
    private static extern int OrvScanner_GetDeviceCount(int scanner);

    [DllImport(Library)]
    private static extern int OrvScanner_GetDeviceInfo(int scanner, int index, out DiscoveredDevice device);

    [DllImport(Library)]
    private static extern int OrvDevice_Connect(ulong address);

    [DllImport(Library)]
    private static extern int OrvDevice_Disconnect(ulong address);

    [DllImport(Library)]
    private static extern int OrvDevice_Send(ulong address, int length, byte[] data);

    [DllImport(Library)]
    private static extern int OrvDevice_Receive(ulong address, int count, byte* buffer);

    public static void Run(string file)
    {
        NativeLibrary.SetDllImportResolver(typeof(LibraryHost).Assembly, (_, _, _) => NativeLibrary.Load(file));
        Check("the record has 64 bytes", sizeof(DiscoveredDevice) == 64);
        Check("a radio is on", BluetoothAvailable() == 0);

        var scanner = OrvScanner_Initialize();
        Check("the scan starts", scanner >= 0 && OrvScanner_Start(scanner) == 0);
        Check("the device is heard with its values", Until(() => IsHeard(scanner)));
        Check("the scan stops", OrvScanner_Stop(scanner) == 0 && OrvScanner_Deinitialize(scanner) == 0);

        Check("the link opens", OrvDevice_Connect(Address) == 0);
        foreach (var block in Blocks)
        {
            if (OrvDevice_Send(Address, block.Length, block) != block.Length)
            {
                Check("a block is sent", false);
            }
        }
        var echo = new byte[Total + 1]; // one byte more, to detect surplus bytes
        var received = 0;
        Until(() =>
        {
            fixed (byte* start = echo)
            {
                received += OrvDevice_Receive(Address, echo.Length - received, start + received);
            }
            return received >= Total;
        });
        Check("the echo is what was sent", received == Total && echo.AsSpan(0, Total).SequenceEqual(Data));
        Check("the link is closed", OrvDevice_Disconnect(Address) == 0);
    }

    private static bool IsHeard(int scanner)
    {
        for (var i = 0; i < OrvScanner_GetDeviceCount(scanner); ++i)
        {
            if (OrvScanner_GetDeviceInfo(scanner, i, out var device) == 0 && device.Address == Address &&
                device.Value0500 == 0x64 && device.Value1130 == 0x01 &&
                Encoding.UTF8.GetString(device.Data1118, 16) == "ORV-0042-SERIAL1")
            {
                return true;
            }
        }
        return false;
    }
}
