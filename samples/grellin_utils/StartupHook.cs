// What the runtime calls before Main in a process whose DOTNET_STARTUP_HOOKS names this assembly. The launcher removes
// the variable, so that nobody's code gets in this way.
internal static class StartupHook
{
    public static void Initialize() => Console.WriteLine("The startup hook got in.");
}
