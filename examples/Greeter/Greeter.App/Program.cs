using System;
using System.Reflection;
using Greeter.Core;
using Greeter.Text;

namespace Greeter.App
{
    internal static class Program
    {
#if DEBUG
        private const string Configuration = "Debug";
#else
        private const string Configuration = "Release";
#endif

        private static int Main(string[] args)
        {
            string name = args.Length > 0 ? string.Join(" ", args) : "world";
            Console.WriteLine(Greeting.For(name, DayTime.PartOf(DateTime.Now)));
            Version version = Assembly.GetExecutingAssembly().GetName().Version;
            Console.WriteLine("Greeter " + version + ", " + Configuration + " build");
            return 0;
        }
    }
}
