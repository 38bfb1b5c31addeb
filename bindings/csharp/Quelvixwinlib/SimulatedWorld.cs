using System;
using System.IO;
using System.Text;
using Quelvixwinlib.Native;

namespace Quelvixwinlib;

/// <summary>Controls the simulated world in tests of hosts. The members throw an EntryPointNotFoundException if the
/// library is not the simulated one.</summary>
public static class SimulatedWorld
{
    /// <summary>Replaces the world with that of a scenario.</summary>
    /// <param name="scenario">The scenario as JSON text, such as {"title": "Empty"}.</param>
    /// <param name="simulatedTime">true if waits take no real time.</param>
    /// <exception cref="ArgumentException">The scenario is wrong; the message names the field.</exception>
    public static unsafe void Play(string scenario, bool simulatedTime = true)
    {
        var file = Path.GetTempFileName();
        try
        {
            File.WriteAllText(file, scenario);
            var error = new byte[400];
            fixed (byte* path = Encoding.UTF8.GetBytes(file + "\0"), text = error)
            {
                if (Functions.OrvWorld_PlayScenario(path, simulatedTime ? 1 : 0, text, error.Length) < 0)
                {
                    throw new ArgumentException(Encoding.UTF8.GetString(error).TrimEnd('\0'), nameof(scenario));
                }
            }
        }
        finally
        {
            File.Delete(file);
        }
    }

    /// <summary>Restores the default world, on real time.</summary>
    public static void Default() => Functions.OrvWorld_Default();

    /// <summary>Advances the clock by `time` and handles all due events.</summary>
    public static void PassTime(TimeSpan time) => Functions.OrvWorld_PassTime((int)time.TotalMilliseconds);

    /// <summary>The time since the world's creation, on its clock.</summary>
    public static TimeSpan Now => TimeSpan.FromMilliseconds(Functions.OrvWorld_Now());
}
