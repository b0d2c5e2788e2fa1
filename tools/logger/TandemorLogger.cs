// The two loggers that are given to an MSBuild-compatible tool. TandemorLogger writes one line per event to standard
// output, for kxhost to read:
//
//   TandemorLogger|KIND|name=value|name=value...
//
// in UTF-8, with "%", "|", CR and LF of a value written as %25, %7C, %0D and %0A. Kinds and their names:
//
//   error, warning                file, line, column, code, project, text
//   message                       importance (high, normal, low), text
//   projectStarted                project, targets
//   projectBegun                  project; the same below Normal, for whoever wants to know but does not show it
//   projectFinished               project, succeeded (true, false)
//   targetStarted, targetFinished project, target
//   buildFinished                 succeeded
//
// The assembly is compiled against the oldest MSBuild interfaces (2.0), so that every later tool can load it; what
// came with later versions is asked for by reflection.
using System;
using System.Collections.Generic;
using System.IO;
using System.Reflection;
using System.Text;
using Microsoft.Build.Framework;

[assembly: AssemblyTitle("TandemorLogger")]
[assembly: AssemblyVersion("1.0.0.0")]

// A logger that says nothing: with it and /noconlog a tool is silent.
public class NullLogger : ILogger
{
    private LoggerVerbosity verbosity_ = LoggerVerbosity.Quiet;
    private string parameters_;

    public LoggerVerbosity Verbosity { get { return verbosity_; } set { verbosity_ = value; } }
    public string Parameters { get { return parameters_; } set { parameters_ = value; } }
    public void Initialize(IEventSource events) { }
    public void Shutdown() { }
}

// Filters by verbosity itself, since some tools send every event to every logger: errors, warnings, projects and the
// end of the build always (who reads them wants to know what was built); from Minimal messages of high importance; from
// Normal also normal ones, and the beginnings of projects to be shown; from Detailed also low ones and
// targets; from Diagnostic also tasks and custom events, as messages of low importance.
public class TandemorLogger : ILogger
{
    private readonly ProjectTracker projects_ = new ProjectTracker();
    private LoggerVerbosity verbosity_ = CommandLine.Verbosity();
    private string parameters_;
    private EventWriter writer_;

    public LoggerVerbosity Verbosity { get { return verbosity_; } set { verbosity_ = value; } }
    public string Parameters { get { return parameters_; } set { parameters_ = value; } }

    public void Initialize(IEventSource events)
    {
        writer_ = new EventWriter(Console.OpenStandardOutput());
        events.ErrorRaised += OnError;
        events.WarningRaised += OnWarning;
        events.ProjectStarted += OnProjectStarted;
        events.ProjectFinished += OnProjectFinished;
        events.BuildFinished += OnBuildFinished;
        if (verbosity_ >= LoggerVerbosity.Minimal) events.MessageRaised += OnMessage;
        if (verbosity_ >= LoggerVerbosity.Detailed)
        {
            events.TargetStarted += OnTargetStarted;
            events.TargetFinished += OnTargetFinished;
        }
        if (verbosity_ >= LoggerVerbosity.Diagnostic)
        {
            events.TaskStarted += delegate(object sender, TaskStartedEventArgs e) { WriteMessage("low", e.Message); };
            events.TaskFinished += delegate(object sender, TaskFinishedEventArgs e) { WriteMessage("low", e.Message); };
            events.CustomEventRaised += delegate(object sender, CustomBuildEventArgs e) { WriteMessage("low", e.Message); };
        }
    }

    public void Shutdown() { }

    private void OnError(object sender, BuildErrorEventArgs e)
    {
        WriteDiagnostic("error", e, e.File, e.LineNumber, e.ColumnNumber, e.Code);
    }

    private void OnWarning(object sender, BuildWarningEventArgs e)
    {
        WriteDiagnostic("warning", e, e.File, e.LineNumber, e.ColumnNumber, e.Code);
    }

    private void WriteDiagnostic(string kind, BuildEventArgs e, string file, int line, int column, string code)
    {
        string project = projects_.ProjectOf(e);
        writer_.Write(kind, "file", Paths.FromProject(project, file), "line", line.ToString(),
                      "column", column.ToString(), "code", code, "project", project, "text", e.Message);
    }

    private void OnMessage(object sender, BuildMessageEventArgs e)
    {
        switch (e.Importance)
        {
            case MessageImportance.High:
                WriteMessage("high", e.Message);
                break;
            case MessageImportance.Normal:
                if (verbosity_ >= LoggerVerbosity.Normal) WriteMessage("normal", e.Message);
                break;
            default:
                if (verbosity_ >= LoggerVerbosity.Detailed) WriteMessage("low", e.Message);
                break;
        }
    }

    private void WriteMessage(string importance, string text)
    {
        writer_.Write("message", "importance", importance, "text", text);
    }

    // Projects are tracked at every verbosity: errors need them.
    private void OnProjectStarted(object sender, ProjectStartedEventArgs e)
    {
        string project = Paths.Full(e.ProjectFile);
        projects_.Started(e, project);
        if (verbosity_ >= LoggerVerbosity.Normal)
            writer_.Write("projectStarted", "project", project, "targets", e.TargetNames);
        else
            writer_.Write("projectBegun", "project", project);
    }

    private void OnProjectFinished(object sender, ProjectFinishedEventArgs e)
    {
        projects_.Finished(e);
        writer_.Write("projectFinished", "project", Paths.Full(e.ProjectFile), "succeeded", Truth(e.Succeeded));
    }

    private void OnTargetStarted(object sender, TargetStartedEventArgs e)
    {
        writer_.Write("targetStarted", "project", Paths.Full(e.ProjectFile), "target", e.TargetName);
    }

    private void OnTargetFinished(object sender, TargetFinishedEventArgs e)
    {
        writer_.Write("targetFinished", "project", Paths.Full(e.ProjectFile), "target", e.TargetName);
    }

    private void OnBuildFinished(object sender, BuildFinishedEventArgs e)
    {
        writer_.Write("buildFinished", "succeeded", Truth(e.Succeeded));
    }

    private static string Truth(bool value) { return value ? "true" : "false"; }
}

// Some tools never tell a logger the verbosity that their user asked for; then it is read from the tool's arguments.
internal static class CommandLine
{
    public static LoggerVerbosity Verbosity()
    {
        LoggerVerbosity result = LoggerVerbosity.Normal;
        foreach (string argument in Environment.GetCommandLineArgs())
        {
            int colon = argument.IndexOf(':');
            if (colon < 2 || (argument[0] != '/' && argument[0] != '-')) continue;
            string name = argument.Substring(1, colon - 1).ToLowerInvariant();
            if (name == "v" || name == "verbosity") result = Named(argument.Substring(colon + 1), result);
        }
        return result;
    }

    // By the first letters, as the tools allow: q, m, n, d, diag.
    private static LoggerVerbosity Named(string text, LoggerVerbosity otherwise)
    {
        if (text.Length == 0) return otherwise;
        foreach (LoggerVerbosity verbosity in Enum.GetValues(typeof(LoggerVerbosity)))
            if (verbosity.ToString().StartsWith(text, StringComparison.OrdinalIgnoreCase)) return verbosity;
        return otherwise;
    }
}

// Which project an error or warning belongs to. Newer tools say it in the event; those before 4.0 say only in which
// context it was raised, and the oldest (one project at a time) nothing at all: there it is the one begun last.
internal class ProjectTracker
{
    private readonly Dictionary<string, string> byContext_ = new Dictionary<string, string>();
    private readonly List<string> running_ = new List<string>();

    public void Started(BuildEventArgs e, string project)
    {
        string context = ContextOf(e);
        if (context != null) byContext_[context] = project;
        running_.Add(project);
    }

    // The context is kept: late events of a project may follow its end.
    public void Finished(ProjectFinishedEventArgs e)
    {
        int last = running_.LastIndexOf(Paths.Full(e.ProjectFile));
        if (last < 0) last = running_.Count - 1;
        if (last >= 0) running_.RemoveAt(last);
    }

    public string ProjectOf(BuildEventArgs e)
    {
        string named = Property(e, "ProjectFile") as string;
        if (!string.IsNullOrEmpty(named)) return Paths.Full(named);
        string context = ContextOf(e);
        string project;
        if (context != null && byContext_.TryGetValue(context, out project)) return project;
        return running_.Count > 0 ? running_[running_.Count - 1] : "";
    }

    private static string ContextOf(BuildEventArgs e)
    {
        object context = Property(e, "BuildEventContext");
        return context == null ? null : Property(context, "NodeId") + ":" + Property(context, "ProjectContextId");
    }

    private static object Property(object owner, string name)
    {
        PropertyInfo property = owner.GetType().GetProperty(name);
        return property == null ? null : property.GetValue(owner, null);
    }
}

internal static class Paths
{
    public static string Full(string path)
    {
        if (string.IsNullOrEmpty(path)) return "";
        try { return Path.GetFullPath(path); }
        catch (ArgumentException) { return path; }
        catch (NotSupportedException) { return path; }
    }

    // A tool reports its own troubles under its own name ("CSC : error ..."), so a bare name that is no file in the
    // project's folder stays as it is.
    public static string FromProject(string project, string file)
    {
        if (string.IsNullOrEmpty(file) || string.IsNullOrEmpty(project)) return file;
        try
        {
            string full = Path.GetFullPath(Path.Combine(Path.GetDirectoryName(project), file));
            return Path.GetFileName(file) != file || File.Exists(full) ? full : file;
        }
        catch (ArgumentException) { return file; }
        catch (NotSupportedException) { return file; }
    }
}

// One event, one line, written at once: what the tool itself prints never lands inside it.
internal class EventWriter
{
    private readonly Stream output_;
    private readonly Encoding utf8_ = new UTF8Encoding(false);

    public EventWriter(Stream output) { output_ = output; }

    public void Write(string kind, params string[] namesAndValues)
    {
        StringBuilder line = new StringBuilder("TandemorLogger|").Append(kind);
        for (int i = 0; i + 1 < namesAndValues.Length; i += 2)
            line.Append('|').Append(namesAndValues[i]).Append('=').Append(Escape(namesAndValues[i + 1]));
        byte[] bytes = utf8_.GetBytes(line.Append('\n').ToString());
        lock (output_)
        {
            output_.Write(bytes, 0, bytes.Length);
            output_.Flush();
        }
    }

    private static string Escape(string value)
    {
        if (value == null) return "";
        return value.Replace("%", "%25").Replace("|", "%7C").Replace("\r", "%0D").Replace("\n", "%0A");
    }
}
