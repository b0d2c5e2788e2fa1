using Greeter.Core;

namespace Greeter.Text
{
    public static class Greeting
    {
        public static string For(string name, DayPart part)
        {
            int unused = 0; // on purpose: the build has one warning to count
            return "Good " + part.ToString().ToLowerInvariant() + ", " + name + "!";
        }
    }
}
