using System;
using System.Collections.Generic;
using System.Threading;
using System.Threading.Tasks;
using Quelvixwinlib.Native;

namespace Quelvixwinlib;

/// <summary>A scanner session with its own list of devices.</summary>
public sealed class Scanner : IDisposable
{
    private const int Pause = 50; // ms between two polls of the device list
    private readonly int id = OrvLibrary.Check("create a scanner", Functions.OrvScanner_Initialize);
    private int disposed;

    /// <summary>Empties the device list and starts the scan.</summary>
    public void Start() => OrvLibrary.Check("start the scan", () => Functions.OrvScanner_Start(Id));

    /// <summary>Ends the scan and keeps the list.</summary>
    public void Stop() => OrvLibrary.Check("stop the scan", () => Functions.OrvScanner_Stop(Id));

    /// <summary>Returns all devices found since Start, in the order of their discovery.</summary>
    public unsafe IReadOnlyList<Device> GetDevices()
    {
        var result = new List<Device>();
        DiscoveredDevice record;
        while (Functions.OrvScanner_GetDeviceInfo(Id, result.Count, &record) == 0)
        {
            result.Add(new Device(record));
        }
        return result;
    }

    /// <summary>Scans for `duration` and yields each device when it is found.</summary>
    public static IEnumerable<Device> Scan(TimeSpan duration)
    {
        var seen = new HashSet<string>();
        using var scanner = new Scanner();
        scanner.Start();
        var end = OrvLibrary.Now + (long)duration.TotalMilliseconds;
        while (true)
        {
            var left = end - OrvLibrary.Now;
            foreach (var device in scanner.GetDevices())
            {
                if (seen.Add(device.Address))
                {
                    yield return device;
                }
            }
            if (left <= 0)
            {
                yield break;
            }
            OrvLibrary.Sleep((int)Math.Min(Pause, left));
        }
    }

    /// <summary>Scans for `duration` on another thread and returns all devices.</summary>
    public static Task<IReadOnlyList<Device>> ScanAsync(TimeSpan duration, CancellationToken cancellation = default) =>
        OrvLibrary.OnOwnThread<IReadOnlyList<Device>>(
            () =>
            {
                using var scanner = new Scanner();
                scanner.Start();
                for (var end = OrvLibrary.Now + (long)duration.TotalMilliseconds; OrvLibrary.Now < end;)
                {
                    cancellation.ThrowIfCancellationRequested();
                    OrvLibrary.Sleep((int)Math.Min(Pause, end - OrvLibrary.Now));
                }
                return scanner.GetDevices();
            },
            cancellation);

    /// <summary>Stops the scan and removes the session.</summary>
    public void Dispose()
    {
        if (Interlocked.Exchange(ref disposed, 1) == 0)
        {
            Functions.OrvScanner_Stop(id);
            Functions.OrvScanner_Deinitialize(id);
        }
    }

    private int Id => disposed == 0 ? id : throw new ObjectDisposedException(nameof(Scanner));
}
