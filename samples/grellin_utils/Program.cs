// A small program for the launcher to run. Its first argument says what to do; without one that it knows, it shows what
// has reached it.

using System.Collections.Concurrent;
using System.Runtime.InteropServices;

switch (args.FirstOrDefault())
{
    case "environment":
        ShowVariables(args.Skip(1));
        return 0;
    case "copy":
        CopyInputToOutput();
        return 0;
    case "work":
        Work(threads: 4, limit: 200_000);
        return 0;
    case "throw":
        throw new InvalidOperationException("thrown because it was asked for");
    case "exit":
        Environment.Exit(int.Parse(args[1]));
        return 0;
    case "return":
        return int.Parse(args[1]);
    case "wait":
        WaitForTermination();
        return 0;
    case "native":
        CallNative(library: args[1], function: args[2]);
        return 0;
    default:
        Show(args);
        return 0;
}

static void Show(string[] arguments)
{
    for (var index = 0; index < arguments.Length; ++index)
        Console.WriteLine($"[{index}] {Quoted(arguments[index])}");
    Console.WriteLine($"runtime {Environment.Version}");
    Console.WriteLine($"host {Quoted(LoadedHost())}");
    Console.WriteLine($"folder {Quoted(AppContext.BaseDirectory)}");
    // Those that the launcher sets, and those that it removes.
    ShowVariables(new[] { "DOTNET_EnableDiagnostics", "DOTNET_MULTILEVEL_LOOKUP" });
    ShowVariables(new[] { "COMPlus_GCName", "DOTNET_GCName", "DOTNET_STARTUP_HOOKS" });
}

static void ShowVariables(IEnumerable<string> names)
{
    foreach (var name in names)
    {
        var value = Environment.GetEnvironmentVariable(name);
        Console.WriteLine(value is null ? $"{name} is not set" : $"{name}={Quoted(value)}");
    }
}

// One line whatever the text holds, so that blanks, line ends and empty texts are all visible.
static string Quoted(string text) =>
    '"' + text.Replace("\\", "\\\\").Replace("\"", "\\\"").Replace("\n", "\\n").Replace("\r", "\\r") + '"';

// The host resolver library that started this process, as the system has it.
static string LoadedHost() =>
    File.ReadLines("/proc/self/maps")
        .Where(line => line.EndsWith("/libhostfxr.so"))
        .Select(line => line[line.IndexOf('/')..])
        .FirstOrDefault("");

static void CopyInputToOutput()
{
    using var output = Console.OpenStandardOutput();
    Console.OpenStandardInput().CopyTo(output);
}

// Several threads gather primes in shared collections, and what they leave behind is collected meanwhile.
static void Work(int threads, int limit)
{
    var primesByLastDigit = new ConcurrentDictionary<int, ConcurrentBag<int>>();
    var workers = Enumerable.Range(0, threads).Select(first => new Thread(() =>
    {
        for (var number = first; number < limit; number += threads)
            if (IsPrime(number))
                primesByLastDigit.GetOrAdd(number % 10, _ => new ConcurrentBag<int>()).Add(number);
        GC.Collect();
    })).ToList();
    workers.ForEach(worker => worker.Start());
    workers.ForEach(worker => worker.Join());

    foreach (var (digit, primes) in primesByLastDigit.OrderBy(entry => entry.Key))
        Console.WriteLine($"{primes.Count} primes below {limit} end in {digit}");
    Console.WriteLine($"{threads} threads, garbage collected {(GC.CollectionCount(0) > 0 ? "meanwhile" : "never")}");
}

static bool IsPrime(int number)
{
    for (var divisor = 2; divisor * divisor <= number; ++divisor)
        if (number % divisor == 0)
            return false;
    return number >= 2;
}

static void WaitForTermination()
{
    using var terminated = new ManualResetEventSlim();
    using var registration = PosixSignalRegistration.Create(PosixSignal.SIGTERM, context =>
    {
        context.Cancel = true;
        Console.WriteLine($"received {context.Signal}");
        terminated.Set();
    });
    Console.WriteLine($"waiting in process {Environment.ProcessId}");
    terminated.Wait();
    Console.WriteLine("ending");
}

// A function without arguments of a library; samples/native_library has one.
static void CallNative(string library, string function) =>
    Marshal.GetDelegateForFunctionPointer<Action>(NativeLibrary.GetExport(NativeLibrary.Load(library), function))();
