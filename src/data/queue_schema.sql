-- The queue from which workers take the letters of runs, beside the branches' rows of
-- server_schema.sql. Nobody writes to these tables but through the functions below, which hold a
-- worker to the letters it has in hand, and a login to its branches.
--
-- A letter's `state` is what is known of it, in the words of a run log; its `place` is who has it:
--   ready      whoever asks next
--   leased     a worker, as long as the lease lasts
--   later      nobody: it failed, and is tried again at not_before
--   out        nothing more is done with it by itself
--   cancelled
begin;
create schema queue;

create table queue.version(number int not null);
insert into queue.version values (1);

-- How long a letter that failed waits, by how often it has; after the last it is out.
create table queue.pause(failures int primary key, wait interval not null);
insert into queue.pause values (1, '30 s'), (2, '2 min'), (3, '10 min'), (4, '30 min');

create table queue.template(
  digest bytea primary key,  -- SHA-256 of the source
  source bytea not null);

create table queue.worker(
  id int generated always as identity primary key,
  login name not null default session_user,
  backend int not null default pg_backend_pid(),
  host text not null,
  pid int not null,
  version text not null,
  started timestamptz not null default now(),
  seen timestamptz not null default now(),
  ended timestamptz);
create index worker_present on queue.worker(id) where ended is null;

create table queue.run(
  id int generated always as identity primary key,
  asked_by name not null default session_user,
  asked timestamptz not null default now(),
  as_of timestamp(0) not null,        -- "today" for every worker
  needs_version int not null,         -- of the workers
  template bytea not null references queue.template,
  template_kind text not null,
  template_name text not null,
  destination text not null check (destination in ('folder', 'printer', 'email')),
  subject text not null,
  printer text not null,
  pdf boolean not null,
  name_pattern text not null,
  send_held boolean not null default false,
  -- 'filling': recipients are still being added; 'ended': nothing is left that a worker could do.
  state text not null default 'filling'
    check (state in ('filling', 'open', 'paused', 'cancelled', 'ended')));

-- The answers to a run's prompts.
create table queue.answer(
  run int not null references queue.run on delete cascade,
  prompt text not null, answer text not null,
  primary key (run, prompt));

-- A run's letters of one branch.
create table queue.part(
  run int not null references queue.run on delete cascade,
  branch int not null references rental.branch on delete cascade,
  letters int not null,
  -- While its mail server, or its data, refuse everything.
  paused_until timestamptz,
  pauses int not null default 0,      -- in a row
  reason text,
  primary key (run, branch));

-- What belongs to a part in great numbers refers to it without a foreign key: the server would lock
-- the part's row for each. `remove_letters` takes it along.
create table queue.letter(
  run int not null,
  branch int not null,
  number int not null,                -- in the part, from 1
  name text not null,
  code text not null,
  owner_code text not null,
  place text not null default 'ready'
    check (place in ('ready', 'leased', 'later', 'out', 'cancelled')),
  state text not null default 'waiting'
    check (state in ('waiting', 'saving', 'saved', 'sending', 'mailed', 'printing', 'printed',
      'failed', 'holding', 'held', 'no address')),
  file text not null default '',      -- below the branch's folder
  fingerprint text not null default '',
  detail text not null default '',
  lease bigint,                       -- the last one
  failures smallint not null default 0,
  lost smallint not null default 0,   -- workers that ended with it in hand
  not_before timestamptz,
  changed timestamptz not null default now(),
  -- Indexes that name these, and not the place, stay as they are while a letter is in hand, and
  -- its row's versions on their page.
  ready boolean generated always as (place = 'ready') stored,
  standing text generated always as (case
    when place <> 'out' then place
    when state in ('saved', 'mailed', 'printed') then 'done'
    when state in ('sending', 'printing') then 'in doubt'
    when state in ('held', 'holding') then 'held'
    when state = 'no address' then state
    else 'failed' end) stored,
  primary key (run, branch, number))
  with (fillfactor = 60, autovacuum_vacuum_scale_factor = 0.05,
    autovacuum_vacuum_insert_scale_factor = 0.5, autovacuum_vacuum_cost_delay = 0);
create index letter_ready on queue.letter(run, branch, number) where ready;
create index letter_later on queue.letter(not_before) where not_before is not null;

-- The letters that a worker has in hand together.
create table queue.lease(
  id bigint generated always as identity primary key,
  run int not null,
  branch int not null,
  worker int not null references queue.worker,
  until timestamptz not null,
  numbers int[] not null)
  with (autovacuum_vacuum_scale_factor = 0, autovacuum_vacuum_threshold = 1000);
create index lease_worker on queue.lease(worker);
create index lease_part on queue.lease(run, branch);

-- The leases that were over with letters in doubt, and whose they were: what these workers have to
-- say of the letters still counts.
create table queue.lost_lease(
  id bigint primary key,
  run int not null references queue.run on delete cascade,
  login name not null);
create index lost_lease_run on queue.lost_lease(run);

-- The names of letters' files, each given once in a branch's folder; letter case does not count,
-- since it does not on every disk.
create table queue.name(
  branch int not null,
  name text not null,
  run int not null,
  number int not null,
  primary key (branch, name));
create index name_part on queue.name(run, branch);

create function queue.remove_letters() returns trigger language plpgsql security definer
set search_path = pg_catalog, pg_temp as $$
begin
  delete from queue.name where run = old.run and branch = old.branch;
  delete from queue.lease where run = old.run and branch = old.branch;
  delete from queue.letter where run = old.run and branch = old.branch;
  return null;
end $$;
create trigger remove_letters after delete on queue.part for each row
  execute function queue.remove_letters();

-- How many letters stand how, kept by a trigger; whoever changes letters counts in a row of its
-- own, so that none waits for another.
create table queue.tally(
  run int not null, branch int not null, shard int not null, standing text not null,
  letters int not null,
  primary key (run, branch, shard, standing),
  foreign key (run, branch) references queue.part on delete cascade)
  with (fillfactor = 50, autovacuum_vacuum_scale_factor = 0, autovacuum_vacuum_threshold = 1000);
-- How many were done in each span of ten seconds, for some minutes.
create table queue.pace(
  run int not null, branch int not null, span timestamptz not null, shard int not null,
  letters int not null,
  primary key (run, branch, span, shard),
  foreign key (run, branch) references queue.part on delete cascade)
  with (fillfactor = 50, autovacuum_vacuum_scale_factor = 0, autovacuum_vacuum_threshold = 1000);

-- What happened that a person may want to know: never changed.
create table queue.event(
  at timestamptz not null default clock_timestamp(),
  run int not null references queue.run on delete cascade,
  branch int, number int, worker int,
  what text not null);
create index event_run on queue.event(run, at);

-- When lost workers were last looked for.
create table queue.round(at timestamptz not null);
insert into queue.round values ('-infinity');

create function queue.count_letters() returns trigger language plpgsql
set search_path = pg_catalog, pg_temp as $$
declare
  own_shard int;
begin
  -- One in which no other transaction counts: two that shared one could wait for each other.
  for i in 0 .. 63 loop
    own_shard := (pg_backend_pid() + i) & 63;
    exit when pg_try_advisory_xact_lock(32267, own_shard);
  end loop;
  if tg_op = 'INSERT' then
    insert into queue.tally as t
      select run, branch, own_shard, standing, count(*) from added group by run, branch, standing
      on conflict (run, branch, shard, standing) do update set letters = t.letters + excluded.letters;
    return null;
  end if;
  with change as (
    select run, branch, standing, sum(n) n from (
      select run, branch, standing, 1 n from after_change
      union all select run, branch, standing, -1 from before_change) c
    group by run, branch, standing having sum(n) <> 0),
  counted as (
    insert into queue.tally as t select run, branch, own_shard, standing, n from change
    on conflict (run, branch, shard, standing) do update set letters = t.letters + excluded.letters)
  insert into queue.pace as p
    select run, branch, to_timestamp(floor(extract(epoch from clock_timestamp()) / 10) * 10),
      own_shard, n from change where standing = 'done' and n > 0
  on conflict (run, branch, span, shard) do update set letters = p.letters + excluded.letters;
  return null;
end $$;
create trigger count_added after insert on queue.letter referencing new table as added
  for each statement execute function queue.count_letters();
create trigger count_changed after update on queue.letter
  referencing old table as before_change new table as after_change
  for each statement execute function queue.count_letters();

-- Runs ------------------------------------------------------------------------------------------

create function queue.sees(a_branch int) returns boolean language sql stable
set search_path = pg_catalog, pg_temp as $$
  select rental.administers(session_user)
    or exists (select from rental.may_see where login = session_user and branch = a_branch)
$$;

-- Raises unless this login may decide on the whole run: it has asked for it, or sees all of it.
create function queue.require_own(a_run int) returns void language plpgsql
set search_path = pg_catalog, pg_temp as $$
begin
  if not exists (select from queue.run where id = a_run) then
    raise exception 'there is no run %', a_run using errcode = 'no_data_found';
  end if;
  if not exists (select from queue.run where id = a_run and asked_by = session_user)
    and exists (select from queue.part where run = a_run and not queue.sees(branch)) then
    raise exception 'run % has letters of branches that the login % does not see', a_run,
      session_user using errcode = 'insufficient_privilege';
  end if;
end $$;

-- A new run without recipients, which nobody takes letters of before open_run.
create function queue.put_run(a_as_of timestamp, a_needs_version int, a_source bytea, a_kind text,
  a_name text, a_destination text, a_subject text, a_printer text, a_pdf boolean, a_pattern text,
  a_prompts text[], a_answers text[])
returns int language sql security definer set search_path = pg_catalog, pg_temp as $$
  insert into queue.template values (sha256(a_source), a_source) on conflict do nothing;
  with added as (
    insert into queue.run(as_of, needs_version, template, template_kind, template_name,
        destination, subject, printer, pdf, name_pattern)
      values (a_as_of, a_needs_version, sha256(a_source), a_kind, a_name, a_destination, a_subject,
        a_printer, a_pdf, a_pattern)
      returning id),
  answered as (
    insert into queue.answer select id, a.prompt, a.answer
      from added, unnest(a_prompts, a_answers) a(prompt, answer))
  select id from added
$$;
-- Adds recipients of a branch behind those that were added before.
create function queue.put_letters(a_run int, a_branch int, a_names text[], a_codes text[],
  a_owner_codes text[])
returns void language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  before int;
begin
  if not queue.sees(a_branch) then
    raise exception 'the login % does not see this branch', session_user
      using errcode = 'insufficient_privilege';
  end if;
  perform from queue.run where id = a_run and state = 'filling' and asked_by = session_user
    for update;
  if not found then
    raise exception 'run % takes no more recipients', a_run using errcode = 'no_data_found';
  end if;
  insert into queue.part as p(run, branch, letters) values (a_run, a_branch, cardinality(a_names))
    on conflict (run, branch) do update set letters = p.letters + excluded.letters
    returning letters - cardinality(a_names) into before;
  insert into queue.letter(run, branch, number, name, code, owner_code)
    select a_run, a_branch, before + r.number, r.name, r.code, r.owner_code
    from unnest(a_names, a_codes, a_owner_codes) with ordinality r(name, code, owner_code, number);
end $$;
create function queue.open_run(a_run int) returns void language plpgsql security definer
set search_path = pg_catalog, pg_temp set lock_timeout = '2s' as $$
begin
  update queue.run set state = 'open'
    where id = a_run and state = 'filling' and asked_by = session_user;
  if not found then
    raise exception 'run % cannot be opened', a_run using errcode = 'no_data_found';
  end if;
  notify tenora_queue;
  begin
    -- Until it has counted them, the server takes the queue for an empty one, and reads all letters
    -- of a part to find those in hand.
    analyze queue.part, queue.letter;
  exception when lock_not_available then
    null;  -- it is counting them now
  end;
end $$;

create function queue.note_event(a_run int, a_what text) returns void language sql
set search_path = pg_catalog, pg_temp as $$
  insert into queue.event(run, what) values (a_run, a_what || ' by ' || session_user)
$$;

create function queue.pause_run(a_run int) returns boolean language plpgsql security definer
set search_path = pg_catalog, pg_temp as $$
begin
  perform queue.require_own(a_run);
  update queue.run set state = 'paused' where id = a_run and state = 'open';
  if not found then return false; end if;
  perform queue.note_event(a_run, 'paused');
  return true;
end $$;

-- Letters in hand are finished; no other is begun, ever.
create function queue.cancel_run(a_run int) returns boolean language plpgsql security definer
set search_path = pg_catalog, pg_temp as $$
begin
  perform queue.require_own(a_run);
  -- Whoever gives letters back has the row till they are back, and then they are found below; or
  -- waits for it, and then finds the run cancelled.
  perform from queue.run where id = a_run for update;
  update queue.run set state = 'cancelled' where id = a_run and state <> 'cancelled';
  if not found then return false; end if;
  update queue.letter set place = 'cancelled', not_before = null, changed = now()
    where run = a_run and place in ('ready', 'later');
  perform queue.note_event(a_run, 'cancelled');
  return true;
end $$;

-- Goes on after a pause, and with what failed, is held back or had no address: each is looked at
-- again. What may have gone out is not. The number of these letters.
create function queue.resume_run(a_run int, a_send_held boolean) returns int language plpgsql
security definer set search_path = pg_catalog, pg_temp as $$
declare
  again int;
begin
  perform queue.require_own(a_run);
  update queue.run set state = 'open', send_held = a_send_held
    where id = a_run and state in ('open', 'paused', 'ended');
  if not found then
    raise exception 'run % is cancelled or not yet whole', a_run using errcode = 'no_data_found';
  end if;
  update queue.part set paused_until = null, pauses = 0, reason = null
    where run = a_run and paused_until is not null;
  update queue.letter set place = 'ready', failures = 0, lost = 0, not_before = null, changed = now()
    where run = a_run and (place = 'later' or standing in ('failed', 'held', 'no address'));
  get diagnostics again = row_count;
  perform queue.note_event(a_run, 'resumed');
  notify tenora_queue;
  return again;
end $$;

-- What a person has found out of a letter in doubt: it arrived, or it did not and is sent again.
create function queue.clear_doubt(a_run int, a_branch text, a_number int, a_arrived boolean)
returns boolean language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  own_branch int := (select id from rental.branch where name = a_branch and queue.sees(id));
begin
  perform from queue.run where id = a_run for update;
  update queue.letter set
      place = case when a_arrived then 'out'
        when (select r.state from queue.run r where r.id = a_run) = 'cancelled' then 'cancelled'
        else 'ready' end,
      state = case when not a_arrived then case when file = '' then 'waiting' else 'saved' end
        when state = 'printing' then 'printed' else 'mailed' end,
      lease = null, failures = 0, changed = now()
    where run = a_run and branch = own_branch and number = a_number and standing = 'in doubt';
  if not found then return false; end if;
  insert into queue.event(run, branch, number, what) values (a_run, own_branch, a_number,
    case when a_arrived then 'has arrived, says ' else 'did not arrive, says ' end || session_user);
  if not a_arrived then
    update queue.run set state = 'open' where id = a_run and state = 'ended';
    notify tenora_queue;
  end if;
  return true;
end $$;

-- Removes a run that nothing is to be done of, with what is known of its letters.
create function queue.remove_run(a_run int) returns void language plpgsql security definer
set search_path = pg_catalog, pg_temp as $$
begin
  perform queue.require_own(a_run);
  perform from queue.run where id = a_run for update;
  if exists (select from queue.run where id = a_run and state in ('open', 'paused'))
    or exists (select from queue.lease where run = a_run) then
    raise exception 'run % is in progress', a_run using errcode = 'object_in_use';
  end if;
  delete from queue.run where id = a_run;
  delete from queue.template t where not exists (select from queue.run where template = t.digest);
end $$;

-- Workers ---------------------------------------------------------------------------------------

-- A worker holds an advisory lock in the session in which it takes letters. The server drops it
-- with the session, however that ends: nothing has to be waited for.
create function queue.join_pool(a_host text, a_pid int, a_version text) returns int
language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  own_id int;
begin
  loop
    insert into queue.worker(host, pid, version) values (a_host, a_pid, a_version)
      returning id into own_id;
    -- Any login may hold any advisory lock; another number is as good.
    exit when pg_try_advisory_lock(32266, own_id);
    delete from queue.worker where id = own_id;
  end loop;
  return own_id;
end $$;
-- Notes the runs of which nothing is left.
create function queue.end_runs() returns void language plpgsql
set search_path = pg_catalog, pg_temp as $$
declare
  idle int;
begin
  -- The row first, and then the count: whoever adds to what is left has the row.
  for idle in select id from queue.run where state = 'open' for update skip locked loop
    update queue.run set state = 'ended' where id = idle and not exists (
      select from queue.tally t where t.run = idle and t.standing in ('ready', 'leased', 'later')
      group by t.run having sum(t.letters) > 0);
  end loop;
end $$;

create function queue.leave_pool(a_worker int) returns void language sql security definer
set search_path = pg_catalog, pg_temp as $$
  update queue.worker set ended = now(), seen = now() where id = a_worker and login = session_user;
  select pg_advisory_unlock(32266, a_worker);
  select queue.end_runs()
$$;

-- The parts of which this login may take letters now.
create view queue.open_part as
select p.run, p.branch, p.letters, b.name, r.send_held, r.needs_version
from queue.run r join queue.part p on p.run = r.id join rental.branch b on b.id = p.branch
where r.state = 'open' and (p.paused_until is null or p.paused_until <= now())
  and ((select rental.administers(session_user))
    or p.branch in (select s.branch from rental.may_see s where s.login = session_user));

-- Locks letters of a part that are ready, at most so many; their numbers, or null. A letter with
-- which a worker was lost comes alone: the next may be lost too.
create function queue.ready_letters(a_run int, a_branch int, a_count int) returns int[]
language plpgsql set search_path = pg_catalog, pg_temp as $$
declare
  taken int[];
begin
  select array_agg(c.number) into taken from (
    select l.number from queue.letter l
    where l.run = a_run and l.branch = a_branch and l.ready and l.lost = 0
    order by l.number limit a_count for update skip locked) c;
  if taken is null then
    select array_agg(c.number) into taken from (
      select l.number from queue.letter l where l.run = a_run and l.branch = a_branch and l.ready
      order by l.number limit 1 for update skip locked) c;
  end if;
  return taken;
end $$;

-- Letters of one branch and run, at most so many, for a lease of so many seconds; none where
-- nothing is ready. First those of the part that the worker has loaded, and no other is looked at
-- then; after that of the part on which fewest work.
create function queue.claim(a_worker int, a_version int, a_branches text[], a_run int, a_branch int,
  a_count int, a_seconds int)
returns table(lease bigint, run int, branch int, branch_name text, in_part int, number int,
  name text, code text, owner_code text, state text, file text, fingerprint text, detail text,
  send_held boolean)
language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  part record;
  taken int[];
  own_lease bigint;
begin
  update queue.worker w set seen = now()
    where w.id = a_worker and w.login = session_user and w.ended is null;
  if not found then
    raise exception 'this worker was given up' using errcode = 'object_not_in_prerequisite_state';
  end if;
  select p.* into part from queue.open_part p
    where p.run = a_run and p.branch = a_branch and p.needs_version <= a_version
      and (a_branches is null or p.name = any (a_branches));
  if found then taken := queue.ready_letters(a_run, a_branch, a_count); end if;
  if taken is null then
    for part in
      select p.* from queue.open_part p
      where p.needs_version <= a_version and (a_branches is null or p.name = any (a_branches))
        and exists (
          select from queue.letter l where l.run = p.run and l.branch = p.branch and l.ready)
      order by (select count(*) from queue.lease e where e.run = p.run and e.branch = p.branch),
        p.run, p.branch
    loop
      taken := queue.ready_letters(part.run, part.branch, a_count);
      exit when taken is not null;
    end loop;
  end if;
  if taken is null then return; end if;
  insert into queue.lease(run, branch, worker, until, numbers)
    values (part.run, part.branch, a_worker, now() + make_interval(secs => a_seconds), taken)
    returning id into own_lease;
  return query
    update queue.letter l set place = 'leased', lease = own_lease, changed = now()
    where l.run = part.run and l.branch = part.branch and l.number = any (taken)
    returning own_lease, l.run, l.branch, part.name, part.letters, l.number, l.name, l.code,
      l.owner_code, l.state, l.file, l.fingerprint, l.detail, part.send_held;
end $$;

-- What a run asks of its workers; none for a login that sees nothing of it.
create function queue.run_of(a_run int)
returns table(as_of timestamp, source bytea, template_kind text, template_name text,
  destination text, subject text, printer text, pdf boolean, name_pattern text)
language sql security definer set search_path = pg_catalog, pg_temp as $$
  select r.as_of, t.source, r.template_kind, r.template_name, r.destination, r.subject, r.printer,
    r.pdf, r.name_pattern
  from queue.run r join queue.template t on t.digest = r.template
  where r.id = a_run and exists (select from queue.part where run = r.id and queue.sees(branch))
$$;
create function queue.answers_of(a_run int) returns table(prompt text, answer text)
language sql security definer set search_path = pg_catalog, pg_temp as $$
  select a.prompt, a.answer from queue.answer a
  where a.run = a_run and exists (select from queue.part p where p.run = a_run and queue.sees(p.branch))
$$;

-- Whether a lease is this login's and lasts; prolongs it.
create function queue.prolong(a_lease bigint, a_seconds int) returns boolean language plpgsql
set search_path = pg_catalog, pg_temp as $$
begin
  update queue.lease e set until = clock_timestamp() + make_interval(secs => a_seconds)
    from queue.worker w
    where e.id = a_lease and w.id = e.worker and w.login = session_user
      and e.until > clock_timestamp();
  if not found then return false; end if;
  update queue.worker set seen = clock_timestamp()
    where id = (select worker from queue.lease where id = a_lease)
      and seen < clock_timestamp() - interval '1 s';
  return true;
end $$;

-- Gives each letter a name for its file that no other gets: the first free one of a series "X.rtf",
-- "X(1).rtf", … from this place on. None where the lease is over.
create function queue.take_names(a_run int, a_branch int, a_lease bigint, a_seconds int,
  a_numbers int[], a_series text[], a_places int[], a_states text[], a_fingerprints text[])
returns table(number int, file text) language plpgsql security definer
set search_path = pg_catalog, pg_temp as $$
declare
  wish record;
  place int;
  files text[] := array_fill(null::text, array[cardinality(a_numbers)]);
begin
  if not queue.prolong(a_lease, a_seconds) then return; end if;
  -- In one order for all, so that no two wait for each other.
  for wish in select * from unnest(a_numbers, a_series, a_places) with ordinality
      w(number, series, place, nth) order by lower(w.series), w.number loop
    place := wish.place;
    loop
      file := wish.series || case place when 0 then '' else '(' || place || ')' end || '.rtf';
      -- The name of a letter that is done is free again when its file has gone from the disk, which
      -- a share may say late.
      insert into queue.name as n values (a_branch, lower(file), a_run, wish.number)
        on conflict on constraint name_pkey do update set run = a_run, number = wish.number
        where exists (select from queue.letter l where l.run = n.run and l.branch = n.branch
          and l.number = n.number and l.standing = 'done' and l.changed < now() - interval '5 min');
      -- A name that it was given before, and under which nothing is, is its own.
      exit when found or exists (select from queue.name n where n.branch = a_branch
        and n.name = lower(take_names.file) and n.run = a_run and n.number = wish.number);
      place := place + 1;
    end loop;
    files[wish.nth] := file;
  end loop;
  return query
    update queue.letter l set file = n.file, state = n.state, fingerprint = n.fingerprint,
      detail = n.fingerprint, changed = now()
    from unnest(a_numbers, files, a_states, a_fingerprints) n(number, file, state, fingerprint)
    where l.run = a_run and l.branch = a_branch and l.number = n.number
      and l.lease = a_lease and l.place = 'leased'
    returning l.number, l.file;
  get diagnostics place = row_count;
  if place <> cardinality(a_numbers) then
    raise exception 'not all of these letters are in hand'
      using errcode = 'object_not_in_prerequisite_state';
  end if;
end $$;

-- Notes what has become of letters in hand, and gives their numbers. What is about to be handed
-- over is noted so before it is, and handed over only if its number is among them: else the lease
-- is over, and the letter may be somebody else's. A worker that was given up wrongly, and has
-- handed over a letter all the same, or has not, says so afterwards. `ends`: what follows, '' (it is
-- still in hand), 'out', 'again' (it failed) or 'back' (it was not begun, or not to its end).
create function queue.note(a_run int, a_branch int, a_lease bigint, a_seconds int, a_numbers int[],
  a_states text[], a_files text[], a_fingerprints text[], a_details text[], a_ends text[],
  a_last boolean)
returns setof int language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
  lasts constant boolean := queue.prolong(a_lease, a_seconds);
begin
  if exists (select from queue.lease where id = a_lease and (run, branch) <> (a_run, a_branch)) then
    return;
  end if;
  if not lasts and not exists (
      select from queue.lost_lease where id = a_lease and login = session_user
      union all select from queue.lease e join queue.worker w on w.id = e.worker
        where e.id = a_lease and w.login = session_user) then
    return;
  end if;
  if a_ends && array['again', 'back'] then
    perform from queue.run where id = a_run for key share;
  end if;
  return query
    update queue.letter l set
      state = n.state, file = n.file, fingerprint = n.fingerprint, detail = n.detail,
      place = case
        when n.ends = '' then 'leased'
        when n.ends = 'back' and r.state = 'cancelled' then 'cancelled'
        when n.ends = 'back' then 'ready'
        when n.ends = 'again' and r.state <> 'cancelled'
          and exists (select from queue.pause where failures = l.failures + 1) then 'later'
        else 'out' end,
      failures = l.failures + (n.ends = 'again')::int,
      not_before = case when n.ends = 'again' and r.state <> 'cancelled' then
        now() + (select wait from queue.pause where failures = l.failures + 1) end,
      changed = now()
    from unnest(a_numbers, a_states, a_files, a_fingerprints, a_details, a_ends)
      n(number, state, file, fingerprint, detail, ends), queue.run r
    where r.id = a_run and l.run = a_run and l.branch = a_branch and l.number = n.number
      and l.lease = a_lease and case when lasts then l.place = 'leased'
        -- Nobody else has handed it over, or could have.
        else l.place in ('leased', 'out') and l.state in ('sending', 'printing') and n.ends <> ''
        end
    returning l.number;
  if not lasts then return; end if;
  if exists (select from unnest(a_states, a_ends) n(state, ends)
      where ends = 'out' and state in ('mailed', 'printed', 'saved')) then
    update queue.part set pauses = 0, reason = null, paused_until = null
      where run = a_run and branch = a_branch and pauses > 0;
  end if;
  if not a_last then return; end if;
  if exists (select from queue.lease e join queue.letter l on l.run = e.run and l.branch = e.branch
        and l.number = any (e.numbers)
      where e.id = a_lease and l.lease = a_lease and l.place = 'leased') then
    perform from queue.run where id = a_run for key share;
    with left_over as (
      update queue.letter l set changed = now(), place = case
          when l.state in ('sending', 'printing') then 'out'
          when (select state from queue.run where id = a_run) = 'cancelled' then 'cancelled'
          else 'ready' end
        from queue.lease e
        where e.id = a_lease and l.run = e.run and l.branch = e.branch and l.number = any (e.numbers)
          and l.lease = a_lease and l.place = 'leased'
        returning l.standing)
    insert into queue.lost_lease select a_lease, a_run, session_user
      where exists (select from left_over where standing = 'in doubt');
  end if;
  delete from queue.lease where id = a_lease;
end $$;

-- Leaves a run's letters of a branch alone for a while, longer each time: what happens to one there
-- would happen to all.
create function queue.pause_part(a_run int, a_branch int, a_worker int, a_reason text)
returns void language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
begin
  if not queue.sees(a_branch) then return; end if;
  update queue.part set pauses = pauses + 1, reason = a_reason,
      paused_until = now() + least(interval '1 min' * 2 ^ least(pauses, 10), interval '1 hour')
    -- Of several workers that meet it together the first one counts.
    where run = a_run and branch = a_branch and (paused_until is null or paused_until <= now());
  if found then
    insert into queue.event(run, branch, worker, what)
      values (a_run, a_branch, a_worker, 'paused: ' || a_reason);
  end if;
end $$;

-- Looks, at most every three seconds, for workers whose session has ended and for leases that have
-- run out. What may have gone out is in doubt, for a person; the rest is ready again, but for a
-- letter with which five workers were lost. Gives how many letters it has found.
create function queue.look_round() returns int language plpgsql security definer
set search_path = pg_catalog, pg_temp as $$
declare
  over record;
  found_letters int := 0;
  letters_of_it int;
begin
  update queue.round set at = clock_timestamp() where at < clock_timestamp() - interval '3 s';
  if not found then return 0; end if;
  update queue.worker w set ended = now()
    where w.ended is null and not exists (
      select from pg_locks k where k.locktype = 'advisory' and k.classid = 32266
        and k.objid = w.id and k.pid = w.backend and k.granted
        and k.database = (select oid from pg_database where datname = current_database()));
  for over in
    select e.*, w.login from queue.lease e join queue.worker w on w.id = e.worker
    where w.ended is not null or e.until < clock_timestamp() for update of e skip locked
  loop
    perform from queue.run where id = over.run for key share;
    with gone as (
      update queue.letter l set changed = now(), lost = l.lost + 1,
        place = case
          when l.state in ('sending', 'printing') or l.lost + 1 >= 5 then 'out'
          when r.state = 'cancelled' then 'cancelled'
          else 'ready' end,
        state = case when l.state in ('sending', 'printing') or l.lost + 1 < 5 then l.state
          else 'failed' end,
        detail = case when l.state in ('sending', 'printing') or l.lost + 1 < 5 then l.detail
          else 'five workers were lost with this letter in hand' end
      from queue.run r
      where r.id = over.run and l.run = over.run and l.branch = over.branch
        and l.number = any (over.numbers) and l.lease = over.id and l.place = 'leased'
      returning l.number, l.standing),
    told as (
      insert into queue.event(run, branch, number, worker, what)
        select over.run, over.branch, number, over.worker, 'in doubt: its worker was lost'
        from gone where standing = 'in doubt'),
    remembered as (
      insert into queue.lost_lease select over.id, over.run, over.login
        where exists (select from gone where standing = 'in doubt'))
    select count(*) into letters_of_it from gone;
    insert into queue.event(run, branch, worker, what) values (over.run, over.branch, over.worker,
      'worker lost with ' || letters_of_it || ' letters in hand');
    found_letters := found_letters + letters_of_it;
    delete from queue.lease where id = over.id;
  end loop;
  -- Not those that are cancelled or resumed at this moment.
  with due as (
    select run, branch, number from queue.letter where not_before <= now() for update skip locked)
  update queue.letter l set place = 'ready', not_before = null from due d
    where l.run = d.run and l.branch = d.branch and l.number = d.number;
  perform queue.end_runs();
  delete from queue.pace where span < now() - interval '10 min';
  return found_letters;
end $$;

-- What a person asks for ------------------------------------------------------------------------

create view queue.progress with (security_invoker = true) as
select p.run, p.branch, b.name branch_name, p.letters, t.*,
  case when p.paused_until > now() then p.paused_until end paused_until,
  case when p.paused_until > now() then p.reason end reason,
  (select count(*) from queue.lease e where e.run = p.run and e.branch = p.branch) leases,
  -- Since the run's first letter of late, not the branch's: rates of branches add up.
  coalesce((select sum(c.letters) from queue.pace c where c.run = p.run and c.branch = p.branch
    and c.span > now() - interval '1 min')
    / greatest(10, extract(epoch from now() - (select min(a.span) from queue.pace a
      where a.run = p.run and a.span > now() - interval '1 min'))), 0) per_second
from queue.part p join rental.branch b on b.id = p.branch cross join lateral (
  select coalesce(sum(s.letters) filter (where standing = 'ready'), 0) ready,
    coalesce(sum(s.letters) filter (where standing = 'leased'), 0) in_hand,
    coalesce(sum(s.letters) filter (where standing = 'later'), 0) later,
    coalesce(sum(s.letters) filter (where standing = 'done'), 0) done,
    coalesce(sum(s.letters) filter (where standing = 'in doubt'), 0) in_doubt,
    coalesce(sum(s.letters) filter (where standing = 'held'), 0) held,
    coalesce(sum(s.letters) filter (where standing = 'no address'), 0) no_address,
    coalesce(sum(s.letters) filter (where standing = 'failed'), 0) failed,
    coalesce(sum(s.letters) filter (where standing = 'cancelled'), 0) cancelled
  from queue.tally s where s.run = p.run and s.branch = p.branch) t;

-- Who may what ------------------------------------------------------------------------------------

grant usage on schema queue to tenora_reader;
grant select on queue.version, queue.pause, queue.worker, queue.run, queue.part, queue.letter,
  queue.lease, queue.tally, queue.pace, queue.event, queue.progress to tenora_reader;
revoke execute on all functions in schema queue from public;
grant execute on function
  queue.put_run(timestamp, int, bytea, text, text, text, text, text, boolean, text, text[], text[]),
  queue.put_letters(int, int, text[], text[], text[]), queue.open_run(int), queue.pause_run(int),
  queue.cancel_run(int), queue.resume_run(int, boolean),
  queue.clear_doubt(int, text, int, boolean), queue.remove_run(int) to tenora_clerk;
grant execute on function
  queue.join_pool(text, int, text), queue.leave_pool(int),
  queue.claim(int, int, text[], int, int, int, int), queue.run_of(int), queue.answers_of(int),
  queue.take_names(int, int, bigint, int, int[], text[], int[], text[], text[]),
  queue.note(int, int, bigint, int, int[], text[], text[], text[], text[], text[], boolean),
  queue.pause_part(int, int, int, text), queue.look_round() to tenora_worker;

-- A login sees the letters of its branches, and the runs that have some.
do $$
declare
  stored text;
begin
  foreach stored in array array['part', 'letter', 'lease', 'tally', 'pace'] loop
    execute format('alter table queue.%I enable row level security', stored);
    execute format('create policy own_branches on queue.%I using (branch in '
      '(select s.branch from rental.may_see s where s.login = session_user))', stored);
  end loop;
  alter table queue.run enable row level security;
  create policy own_runs on queue.run using (asked_by = session_user or id in
    (select p.run from queue.part p));
  alter table queue.event enable row level security;
  create policy own_events on queue.event using (case
    when branch is null then run in (select r.id from queue.run r)
    else branch in (select s.branch from rental.may_see s where s.login = session_user) end);
end $$;
commit;
