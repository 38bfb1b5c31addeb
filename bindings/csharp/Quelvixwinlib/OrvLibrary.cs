using System;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Text;
using System.Text.RegularExpressions;
using System.Threading;
using System.Threading.Tasks;
using Quelvixwinlib.Native;

namespace Quelvixwinlib;

/// <summary>Functions of the whole native library: the check for a radio, and the diagnostics log. The library,
/// simulated or for a radio, is the file quelvixwinlib.dll or libquelvixwinlib.so beside the program.</summary>
public static class OrvLibrary
{
    private const int Limit = 2000; // ms after which the library stops waiting for a system operation
    private static readonly Stopwatch RealTime = Stopwatch.StartNew();
    private static readonly Lazy<bool> Simulated = new(HasWorld);
    private static string? logPath;

    /// <summary>Returns whether a Bluetooth radio is on.</summary>
    public static bool IsAvailable => Functions.BluetoothAvailable() != Constants.ORV_FAILED;

    /// <summary>Empties and enables the log, a file beside the library's file. Exceptions then contain the log's
    /// lines.</summary>
    /// <returns>The log's path.</returns>
    public static string EnableLog()
    {
        Check("write the log", () => Functions.Logging_Enable());
        var modules = Process.GetCurrentProcess().Modules.Cast<ProcessModule>();
        var library = modules.First(module => Regex.IsMatch(
            Path.GetFileName(module.FileName), @"^(lib)?quelvixwinlib\.(dll|so[.\d]*)$"));
        return logPath = library.FileName + ".log";
    }

    /// <summary>Disables the log and keeps its file.</summary>
    public static void DisableLog()
    {
        logPath = null;
        Functions.Logging_Disable();
    }

    /// <summary>Appends a line to the log if it is enabled.</summary>
    public static unsafe void Log(string text)
    {
        var line = Encoding.UTF8.GetBytes(text ?? throw new ArgumentNullException(nameof(text)));
        fixed (byte* start = line)
        {
            Functions.Logging_AppendLine(start, line.Length);
        }
    }

    /// <summary>Returns the result of a call, or throws an exception that states why `action` failed.</summary>
    internal static int Check(string action, Func<int> call)
    {
        var start = Now;
        var endOfLog = LogSize();
        var result = call();
        if (result != Constants.ORV_FAILED)
        {
            return result;
        }
        var log = LogSince(endOfLog);
        if (log.Contains("\tException: "))
        {
            throw new OrvException($"cannot {action}: the system reported an error", OrvFailure.Error, log);
        }
        throw Now - start >= Limit
            ? new OrvException($"cannot {action}: no answer within {Limit} ms", OrvFailure.Timeout, log)
            : new OrvException($"cannot {action}: the device or the system rejected it", OrvFailure.Rejected, log);
    }

    /// <summary>The time in milliseconds on the clock that the timeouts use.</summary>
    internal static long Now => TimeIsSimulated ? Functions.OrvWorld_Now() : RealTime.ElapsedMilliseconds;

    /// <summary>Waits on the clock of Now; simulated milliseconds take no real time.</summary>
    internal static void Sleep(int milliseconds)
    {
        if (TimeIsSimulated)
        {
            Functions.OrvWorld_PassTime(milliseconds);
        }
        else
        {
            Thread.Sleep(milliseconds);
        }
    }

    /// <summary>Runs a call on a new thread, because a call that waits would block a thread of the pool.</summary>
    internal static Task<T> OnOwnThread<T>(Func<T> call, CancellationToken cancellation) =>
        Task.Factory.StartNew(call, cancellation, TaskCreationOptions.LongRunning, TaskScheduler.Default);

    private static bool TimeIsSimulated => Simulated.Value && Functions.OrvWorld_TimeIsSimulated() == 1;

    private static bool HasWorld()
    {
        try
        {
            Functions.OrvWorld_TimeIsSimulated();
            return true;
        }
        catch (EntryPointNotFoundException)
        {
            return false; // the library for a radio has no simulated clock
        }
    }

    private static long LogSize() => logPath is { } path && File.Exists(path) ? new FileInfo(path).Length : 0;

    private static string LogSince(long offset)
    {
        if (logPath is not { } path || !File.Exists(path))
        {
            return "";
        }
        using var file = new FileStream(path, FileMode.Open, FileAccess.Read, FileShare.ReadWrite | FileShare.Delete);
        file.Seek(offset, SeekOrigin.Begin);
        return new StreamReader(file).ReadToEnd();
    }
}
