"""What both trainings share: fresh samples, stopping and going on, the schedule, the loop."""
