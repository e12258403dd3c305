// Grows into the machine in memory that the unit tests drive.
