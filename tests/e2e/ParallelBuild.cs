using System;
using System.Collections;
using Microsoft.Build.Framework;

#pragma warning disable 67
// Plays the events of a build of projects built at once to TandemorLogger, as a tool with parallel nodes raises them.
public class ParallelBuild : IEventSource
{
    public event BuildMessageEventHandler MessageRaised;
    public event BuildErrorEventHandler ErrorRaised;
    public event BuildWarningEventHandler WarningRaised;
    public event BuildStartedEventHandler BuildStarted;
    public event BuildFinishedEventHandler BuildFinished;
    public event ProjectStartedEventHandler ProjectStarted;
    public event ProjectFinishedEventHandler ProjectFinished;
    public event TargetStartedEventHandler TargetStarted;
    public event TargetFinishedEventHandler TargetFinished;
    public event TaskStartedEventHandler TaskStarted;
    public event TaskFinishedEventHandler TaskFinished;
    public event CustomBuildEventHandler CustomEventRaised;
    public event BuildStatusEventHandler StatusEventRaised;
    public event AnyEventHandler AnyEventRaised;

    private void Start(string project, BuildEventContext context)
    {
        ProjectStartedEventArgs e = new ProjectStartedEventArgs("", "", project, "", new ArrayList(), new ArrayList());
        e.BuildEventContext = context;
        ProjectStarted(this, e);
    }

    private void Finish(string project, BuildEventContext context)
    {
        ProjectFinishedEventArgs e = new ProjectFinishedEventArgs("", "", project, true);
        e.BuildEventContext = context;
        ProjectFinished(this, e);
    }

    private void Warn(string code, BuildEventContext context)
    {
        BuildWarningEventArgs e = new BuildWarningEventArgs("", code, "", 0, 0, 0, 0, "", "", "");
        if (context != null) e.BuildEventContext = context;
        WarningRaised(this, e);
    }

    public static void Main()
    {
        ParallelBuild build = new ParallelBuild();
        new TandemorLogger { Verbosity = LoggerVerbosity.Quiet }.Initialize(build);
        new NullLogger { Verbosity = LoggerVerbosity.Diagnostic }.Initialize(build);
        BuildEventContext first = new BuildEventContext(1, 0, 7, 2, 5), second = new BuildEventContext(2, 0, 7, 2, 5);

        build.Warn("before", null);
        build.Start("/a/first.proj", first);
        build.Start("/c/third.proj", new BuildEventContext(1, 0, 8, 2, 5));
        build.Start("/b/second.proj", second);
        build.Warn("of-first", new BuildEventContext(1, 0, 7, 9, 6));
        build.Warn("of-second", second);
        build.Warn("untold", null);
        build.Finish("/a/first.proj", first);
        build.Warn("untold-after-first", null);
        build.Warn("late-of-first", first);
        build.Finish("/b/second.proj", second);
    }
}
