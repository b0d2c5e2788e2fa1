using System;

namespace Greeter.Core
{
    public enum DayPart { Morning, Afternoon, Evening }

    public static class DayTime
    {
        public static DayPart PartOf(DateTime time)
        {
            if (time.Hour < 12) return DayPart.Morning;
            return time.Hour < 18 ? DayPart.Afternoon : DayPart.Evening;
        }
    }
}
