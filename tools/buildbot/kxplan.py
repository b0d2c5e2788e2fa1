"""Runs what `kxhost plan --format buildbot` wrote on the workers of a Buildbot master (3.7 or later); README.md shows a
whole master.cfg."""
import glob
import json
import os

from buildbot.plugins import schedulers, steps, util, worker
from buildbot.process.results import CANCELLED, FAILURE, SUCCESS, WARNINGS
from twisted.internet import defer

PLANS, PARTS = "plan", "part"  # the builders
WELL = (SUCCESS, WARNINGS)


def add(config, workers, results, checkout=(), report=("--report", "kx-report.html", "--junit", "kx-tests.xml"),
        idle_limit=3600, time_limit=4 * 3600):
    """Adds to a master's configuration what runs plans.

    workers: {name: (password, [what it has: "vs2008", "linux", ...])}.
    results: the master's folder for logs and reports; each run of a plan gets a folder there.
    checkout: steps that bring the sources to a worker, before each part.
    report: the options of `kxhost report`, which merges all logs at the end.
    idle_limit, time_limit: seconds without output, and of a part, after which it is given up. A worker that stops to answer is
    known by them only.
    """
    results = os.path.abspath(results)
    config.setdefault("workers", []).extend(
        [worker.Worker(name, password, max_builds=1, properties={"capabilities": list(has)})
         for name, (password, has) in workers.items()] + [worker.LocalWorker("kxplan-master")])
    config.setdefault("builders", []).extend([
        util.BuilderConfig(name=PLANS, workernames=["kxplan-master"], factory=plan_steps(results, report)),
        util.BuilderConfig(name=PARTS, workernames=list(workers), canStartBuild=can_start,
                           factory=part_steps(checkout, idle_limit, time_limit))])
    config.setdefault("schedulers", []).append(schedulers.Triggerable(PARTS, [PARTS]))
    # Requests of one change look the same to Buildbot, which would do one part and take it for all.
    config["collapseRequests"] = False


def can_start(_builder, worker_for_builder, request):
    wanted = request.properties.getProperty("capabilities", [])
    return set(wanted) <= set(worker_for_builder.worker.properties.getProperty("capabilities", []))


def plan_steps(results, report):
    folder = util.Interpolate("%(kw:results)s/plan-%(prop:buildnumber)s", results=results)
    return util.BuildFactory([
        RunPlan(plan=util.Property("plan"), folder=folder, name="parts"),
        steps.ShellCommand(name="report", command=report_command.withArgs(results, report), workdir=folder, alwaysRun=True,
                           logEnviron=False, haltOnFailure=True)])


@util.renderer
def report_command(props, results, report):
    logs = glob.glob(f"{results}/plan-{props['buildnumber']}/part-*.jsonl")
    with open(props["plan"], encoding="utf-8") as file:
        parts = len(json.load(file)["parts"])
    # What could not even begin leaves an empty one: with the number of all of them the report tells of the rest.
    logs = sorted(os.path.basename(log) for log in logs if os.path.getsize(log) > 0)
    return ["kxhost", "report", *logs, "--parts", str(parts), *report]


def part_steps(checkout, idle_limit, time_limit):
    return util.BuildFactory([
        *checkout,
        steps.ShellCommand(name="run", command=util.Property("command"), timeout=idle_limit, maxTime=time_limit,
                           logEnviron=False, haltOnFailure=False, flunkOnFailure=True),
        steps.FileUpload(name="log", workersrc=util.Property("log"), masterdest=util.Property("log_on_master"), alwaysRun=True)])


class RunPlan(steps.Trigger):
    """Dispatches each part once what it needs has succeeded and what it only follows has ended, and waits for all of them. The
    parts of a worker that is lost are repeated by Buildbot on the next one that can."""
    renderables = ["plan", "folder"]

    def __init__(self, plan, folder, **settings):
        super().__init__(schedulerNames=[PARTS], waitForFinish=True, **settings)
        self.plan, self.folder, self.events = plan, folder, defer.DeferredQueue()

    def interrupt(self, reason):
        super().interrupt(reason)
        self.events.put((None, None))

    @defer.inlineCallbacks
    def run(self):
        with open(self.plan, encoding="utf-8") as file:
            waiting = {part["id"]: part for part in json.load(file)["parts"]}
        os.makedirs(self.folder, exist_ok=True)
        self.running = True
        requests, ended, refused, busy = {}, {}, set(), set()
        while not self.ended:
            for part in ready(waiting, ended, refused):
                del waiting[part["id"]]
                busy.add(part["id"])
                requests[part["id"]] = yield self.begin(part)
            if not busy:
                break
            name, result = yield self.events.get()
            busy.discard(name)
            ended[name] = result
        yield self.tell(requests, ended)
        if self.ended:
            return CANCELLED
        return FAILURE if waiting or refused or any(result not in WELL for result in ended.values()) else SUCCESS

    @defer.inlineCallbacks
    def begin(self, part):
        scheduler = self.getSchedulerByName(PARTS)
        properties = self.createTriggerProperties({
            "part": part["id"], "command": part["command"], "log": part["log"], "capabilities": part["capabilities"],
            "log_on_master": os.path.join(self.folder, part["log"]), "virtual_builder_name": "part " + part["id"]})
        ids, result = scheduler.trigger(
            waited_for=True, sourcestamps=self.prepareSourcestampListForTrigger(), set_props=properties,
            parent_buildid=self.build.buildid)
        result.addBoth(lambda found: self.events.put((part["id"], found[0] if isinstance(found, tuple) else FAILURE)))
        request, = (yield ids)[1].values()
        self.brids.append(request)
        return request

    @defer.inlineCallbacks
    def tell(self, requests, ended):
        """parts.json beside the logs: what became of each part, and on which workers it was tried."""
        parts = {}
        for name, request in requests.items():
            builds = yield self.master.data.get(("buildrequests", request, "builds"))
            tried = []
            for build in builds:
                on = yield self.master.data.get(("workers", build["workerid"]))
                tried.append(on["name"])
            parts[name] = {"succeeded": ended.get(name) in WELL, "workers": tried}
        with open(os.path.join(self.folder, "parts.json"), "w", encoding="utf-8") as file:
            json.dump(parts, file, indent=1)


def ready(waiting, ended, refused):
    """The parts that may begin now. Those that wait for one that did not succeed, or was not run, never will."""
    begin = []
    for name, part in waiting.items():
        failed = [need for need in part["needs"] if ended.get(need, SUCCESS) not in WELL]
        if failed or refused.intersection(part["needs"] + part["after"]):
            refused.add(name)
        elif all(need in ended for need in part["needs"] + part["after"]):
            begin.append(part)
    for name in refused.intersection(waiting):
        del waiting[name]
    return begin
